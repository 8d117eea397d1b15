// Export speed against FFmpeg's own work, measured in one run:
// - footage: a 10 s 1080p30 composition of three generated 1080p clips
//   (scaled, one rotated, one blurred, one fading in; their sound mixed) to
//   H.264 at 16 Mbps, against FFmpeg decoding the three sources plus
//   libx264 encoding 300 raw frames of it at the same settings;
// - the same composition at 3840 × 2160: frames per second and peak memory;
// - motion graphics (no footage) to H.264 against libx264 alone;
// - libx264 presets at 16 Mbps: speed and PSNR on the footage frames.
// The 4K run goes first so that the process's peak resident memory is its.

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include "bench/ratio_reporter.hpp"
#include "export/encoders.hpp"
#include "export/export_session.hpp"
#include "export/pixel_conversion.hpp"
#include "media/composition_reader.hpp"
#include "render/gui_runtime.hpp"
#include "tests/media/media_fixtures.hpp"

// The fixture writers, compiled into this program.
#include "tests/media/media_fixtures.cpp"

namespace orvane::export_ {
namespace {

using core::OVTime;
using media::testing::TempFolder;

OVTime secs(double s) { return OVTime::fromSeconds(s); }

core::AnimatedProperty keyed(std::vector<std::pair<double, core::PropertyValue>> keys) {
  core::AnimatedProperty p(keys.front().second);
  for (const auto& [t, v] : keys) p.upsertKeyframe(v, secs(t), core::InterpolationMode::easeInOut);
  return p;
}

struct Media {
  TempFolder folder;
  std::vector<core::MediaAsset> clips;
  core::Composition footage;
  core::Composition motion;
  core::OVProject project;
  std::string error;
};

core::Composition footageComposition(const std::vector<core::MediaAsset>& clips) {
  core::Composition c;
  c.name = "Footage";
  c.size = {1920, 1080};
  c.duration = secs(10);
  c.backgroundColor = {0.1, 0.1, 0.12, 1};
  const core::OVTimeRange all{OVTime::zero, secs(10)};
  core::Layer a(clips[0].name, core::LayerContent::video(clips[0].id), all);
  a.transform.position = core::AnimatedProperty::point(520, 300);
  a.transform.scale = core::AnimatedProperty::point(50, 50);
  core::Layer b(clips[1].name, core::LayerContent::video(clips[1].id), all);
  b.transform.position = core::AnimatedProperty::point(1400, 320);
  b.transform.scale = core::AnimatedProperty::point(50, 50);
  b.transform.rotation = core::AnimatedProperty::double_(20);
  core::Layer blurred(clips[2].name, core::LayerContent::video(clips[2].id), all);
  blurred.transform.position = core::AnimatedProperty::point(960, 760);
  blurred.transform.scale = core::AnimatedProperty::point(60, 60);
  blurred.fadeIn = secs(1);
  core::EffectInstance blur;
  blur.effectID = "blur.gaussian";
  blur.parameters["radius"] = core::AnimatedProperty::double_(12);
  blurred.effects = {blur};
  c.insert(blurred, 0);
  c.insert(b, 0);
  c.insert(a, 0);
  return c;
}

core::Composition motionComposition() {
  core::Composition c;
  c.name = "Motion";
  c.size = {1920, 1080};
  c.duration = secs(10);
  c.backgroundColor = {0.05, 0.08, 0.2, 1};
  const core::OVTimeRange all{OVTime::zero, secs(10)};
  using Type = core::ShapeContent::ShapeType;
  const Type types[] = {Type::rectangle, Type::ellipse, Type::star, Type::polygon};
  for (int i = 0; i < 8; ++i) {
    core::ShapeContent shape;
    shape.type = types[i % 4];
    shape.size = {220.0 + 30 * i, 220.0 + 20 * i};
    shape.fillColor = {0.2 + 0.1 * i, 0.9 - 0.1 * i, 0.5, 1};
    core::Layer layer("Shape " + std::to_string(i), core::LayerContent::shape(shape), all);
    const double y = 140 + 110 * i;
    layer.transform.position = keyed({{0, core::PropertyValue::point(-200, y)},
                                      {5, core::PropertyValue::point(960 + 60 * i, 1080 - y)},
                                      {10, core::PropertyValue::point(2100, y)}});
    layer.transform.rotation = keyed({{0, core::PropertyValue::double_(0)}, {10, core::PropertyValue::double_(360)}});
    layer.transform.opacity = core::AnimatedProperty::double_(80);
    c.insert(layer, 0);
  }
  for (int i = 0; i < 2; ++i) {
    core::TextContent text;
    text.string = i == 0 ? "Orvane Motion" : "Generated, not decoded";
    text.fontSize = i == 0 ? 140 : 72;
    core::Layer layer("Title", core::LayerContent::text(text), all);
    layer.transform.position = keyed({{0, core::PropertyValue::point(960, -100.0 - 100 * i)},
                                      {3, core::PropertyValue::point(960, 640.0 - 220 * i)}});
    layer.transform.opacity = keyed({{0, core::PropertyValue::double_(0)}, {2, core::PropertyValue::double_(100)}});
    c.insert(layer, 0);
  }
  return c;
}

Media& sharedMedia() {
  static Media* made = [] {
    auto* m = new Media();
    for (int i = 0; i < 3; ++i) {
      const auto path = m->folder / ("clip" + std::to_string(i) + ".mp4");
      const std::string written = media::testing::writeVideoClip(
          path, {.width = 1920, .height = 1080, .frameCount = 300, .keyFrameInterval = 60, .busyPicture = true,
                 .withAudio = true});
      if (!written.empty()) m->error = written;
      m->clips.push_back(media::testing::importedAsset(path));
    }
    m->footage = footageComposition(m->clips);
    m->motion = motionComposition();
    m->project = core::OVProject("Bench", std::vector<core::Composition>{m->footage, m->motion});
    for (const auto& clip : m->clips) m->project.addAsset(clip);
    return m;
  }();
  return *made;
}

ExportSettings h264Settings(const core::Composition& c, core::OVSize size) {
  ExportSettings settings;
  settings.codec = ExportCodec::h264;
  settings.size = size;
  settings.frameRate = core::FrameRate::fps30;
  settings.videoBitrateMbps = 16;
  settings.range = c.fullRange();
  return settings;
}

double peakResidentMiB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024.0;
}

void runExport(benchmark::State& state, bool motion, core::OVSize size) {
  Media& m = sharedMedia();
  if (!m.error.empty()) return state.SkipWithError(m.error.c_str());
  const core::Composition& c = motion ? m.motion : m.footage;
  const ExportSettings settings = h264Settings(c, size);
  const auto path = m.folder / "export.mp4";
  for (auto _ : state) {
    ExportSession session;
    auto done = session.exportTo(c, m.project, settings, path);
    if (!done) return state.SkipWithError(done.error().message().c_str());
  }
  state.counters["fps"] = benchmark::Counter(300.0 * state.iterations(), benchmark::Counter::kIsRate);
  state.counters["MiB"] = std::filesystem::file_size(path) / 1048576.0;
  state.counters["peakRSS_MiB"] = peakResidentMiB();
}

void BM_Export4K(benchmark::State& state) { runExport(state, false, {3840, 2160}); }
void BM_ExportFootage1080p(benchmark::State& state) { runExport(state, false, {1920, 1080}); }
void BM_ExportMotion1080p(benchmark::State& state) { runExport(state, true, {1920, 1080}); }

// FFmpeg alone reading the three clips, picture and sound, on every core.
void BM_FFmpegDecodeSources(benchmark::State& state) {
  Media& m = sharedMedia();
  if (!m.error.empty()) return state.SkipWithError(m.error.c_str());
  for (auto _ : state) {
    for (const auto& clip : m.clips) {
      AVFormatContext* format = nullptr;
      if (avformat_open_input(&format, clip.path.c_str(), nullptr, nullptr) < 0) return state.SkipWithError("open");
      avformat_find_stream_info(format, nullptr);
      std::vector<AVCodecContext*> decoders(format->nb_streams, nullptr);
      for (unsigned i = 0; i < format->nb_streams; ++i) {
        const AVCodec* codec = avcodec_find_decoder(format->streams[i]->codecpar->codec_id);
        if (codec == nullptr) continue;
        decoders[i] = avcodec_alloc_context3(codec);
        avcodec_parameters_to_context(decoders[i], format->streams[i]->codecpar);
        decoders[i]->thread_count = 0;
        avcodec_open2(decoders[i], codec, nullptr);
      }
      AVPacket* packet = av_packet_alloc();
      AVFrame* frame = av_frame_alloc();
      const auto drain = [&](AVCodecContext* d) {
        while (avcodec_receive_frame(d, frame) >= 0) av_frame_unref(frame);
      };
      while (av_read_frame(format, packet) >= 0) {
        if (AVCodecContext* d = decoders[packet->stream_index]) {
          avcodec_send_packet(d, packet);
          drain(d);
        }
        av_packet_unref(packet);
      }
      for (AVCodecContext* d : decoders) {
        if (d == nullptr) continue;
        avcodec_send_packet(d, nullptr);
        drain(d);
        avcodec_free_context(&d);
      }
      av_frame_free(&frame);
      av_packet_free(&packet);
      avformat_close_input(&format);
    }
  }
}

// 300 frames of a composition as the encoder takes them (yuv420p), made once.
using FrameStore = std::vector<FrameHandle>;

std::unique_ptr<FrameStore> renderFrames(const core::Composition& c) {
  Media& m = sharedMedia();
  auto assembled = media::CompositionAssembler{}.assemble(c, m.project, 1);
  if (!assembled) return nullptr;
  media::CompositionReader reader(std::move(*assembled));
  auto converter = PictureConverter::make(1920, 1080, 1920, 1080, AV_PIX_FMT_YUV420P);
  if (!converter) return nullptr;
  auto store = std::make_unique<FrameStore>();
  for (int n = 0; n < 300; ++n) {
    auto picture = reader.videoFrameAt(core::FrameRate::fps30.timeForFrame(n));
    if (!picture) return nullptr;
    FrameHandle frame(av_frame_alloc());
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = 1920;
    frame->height = 1080;
    av_frame_get_buffer(frame.get(), 0);
    converter->convert(*picture, *frame);
    store->push_back(std::move(frame));
  }
  return store;
}

FrameStore* footageFrames(bool release = false) {
  static std::unique_ptr<FrameStore> store;
  if (release) {
    store.reset();
    return nullptr;
  }
  if (!store) store = renderFrames(sharedMedia().footage);
  return store.get();
}

struct Encoded {
  std::vector<std::vector<std::uint8_t>> packets;
  std::vector<std::uint8_t> extradata;
};

// libx264 as the export opens it, with preset in place of the export's.
std::optional<Encoded> encodeFrames(const FrameStore& frames, const std::string& preset) {
  VideoEncoderSettings settings = h264Settings(sharedMedia().footage, {1920, 1080}).videoOutputSettings();
  for (auto& [key, value] : settings.options) {
    if (key == "preset") value = preset;
  }
  const AVCodec* codec = avcodec_find_encoder_by_name(settings.encoderName.c_str());
  CodecContextPtr context(avcodec_alloc_context3(codec));
  AVCodecContext& c = *context;
  c.width = 1920;
  c.height = 1080;
  c.pix_fmt = AV_PIX_FMT_YUV420P;
  c.time_base = {1, 30};
  c.framerate = {30, 1};
  c.bit_rate = settings.averageBitRate;
  c.gop_size = settings.maxKeyFrameInterval;
  c.max_b_frames = settings.allowFrameReordering ? c.max_b_frames : 0;
  c.thread_count = 0;
  AVDictionary* options = nullptr;
  av_dict_set(&options, "profile", settings.profile.c_str(), 0);
  for (const auto& [key, value] : settings.options) av_dict_set(&options, key.c_str(), value.c_str(), 0);
  const int opened = avcodec_open2(&c, codec, &options);
  av_dict_free(&options);
  if (opened < 0) return std::nullopt;
  Encoded encoded;
  PacketHandle packet(av_packet_alloc());
  const PacketSink sink = [&](AVPacket& p) -> std::expected<void, std::string> {
    encoded.packets.emplace_back(p.data, p.data + p.size);
    return {};
  };
  for (std::size_t n = 0; n < frames.size(); ++n) {
    frames[n]->pts = static_cast<std::int64_t>(n);
    if (!encodeFrame(c, frames[n].get(), *packet, sink)) return std::nullopt;
  }
  if (!encodeFrame(c, nullptr, *packet, sink)) return std::nullopt;
  return encoded;
}

// Luma PSNR of the encoded stream against the frames it was made from.
double lumaPsnr(const Encoded& encoded, const FrameStore& frames) {
  const AVCodec* codec = avcodec_find_decoder(AV_CODEC_ID_H264);
  CodecContextPtr decoder(avcodec_alloc_context3(codec));
  decoder->thread_count = 0;
  avcodec_open2(decoder.get(), codec, nullptr);
  PacketHandle packet(av_packet_alloc());
  FrameHandle frame(av_frame_alloc());
  double squared = 0;
  std::int64_t count = 0;
  std::size_t index = 0;
  const auto take = [&] {
    while (avcodec_receive_frame(decoder.get(), frame.get()) >= 0) {
      if (index < frames.size()) {
        const AVFrame& original = *frames[index];
        for (int y = 0; y < frame->height; ++y) {
          const std::uint8_t* a = frame->data[0] + y * frame->linesize[0];
          const std::uint8_t* b = original.data[0] + y * original.linesize[0];
          for (int x = 0; x < frame->width; ++x) squared += double(a[x] - b[x]) * (a[x] - b[x]);
        }
        count += std::int64_t(frame->width) * frame->height;
      }
      ++index;
      av_frame_unref(frame.get());
    }
  };
  for (const auto& data : encoded.packets) {
    av_new_packet(packet.get(), static_cast<int>(data.size()));
    std::copy(data.begin(), data.end(), packet->data);
    avcodec_send_packet(decoder.get(), packet.get());
    av_packet_unref(packet.get());
    take();
  }
  avcodec_send_packet(decoder.get(), nullptr);
  take();
  if (count == 0) return 0;
  const double mse = squared / double(count);
  return mse > 0 ? 10 * std::log10(255.0 * 255.0 / mse) : 100;
}

void encodeBenchmark(benchmark::State& state, FrameStore* frames, const std::string& preset, bool quality) {
  if (frames == nullptr) return state.SkipWithError("the frames could not be rendered");
  std::optional<Encoded> encoded;
  for (auto _ : state) {
    encoded = encodeFrames(*frames, preset);
    if (!encoded) return state.SkipWithError("libx264 refused the settings");
  }
  state.counters["fps"] = benchmark::Counter(300.0 * state.iterations(), benchmark::Counter::kIsRate);
  if (quality) state.counters["psnrY_dB"] = lumaPsnr(*encoded, *frames);
}

void BM_X264FootageFrames(benchmark::State& state) { encodeBenchmark(state, footageFrames(), "veryfast", true); }
void BM_X264PresetFaster(benchmark::State& state) { encodeBenchmark(state, footageFrames(), "faster", true); }
void BM_X264PresetFast(benchmark::State& state) {
  encodeBenchmark(state, footageFrames(), "fast", true);
  footageFrames(true);
}
void BM_X264MotionFrames(benchmark::State& state) {
  static std::unique_ptr<FrameStore> store;
  if (!store) store = renderFrames(sharedMedia().motion);
  encodeBenchmark(state, store.get(), "veryfast", false);
  store.reset();
}

BENCHMARK(BM_Export4K)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ExportFootage1080p)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_FFmpegDecodeSources)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_X264FootageFrames)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_X264PresetFaster)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_X264PresetFast)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ExportMotion1080p)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_X264MotionFrames)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

class ExportReporter : public bench_support::RatioReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      for (const auto& [name, counter] : run.counters) counters[run.benchmark_name() + ":" + name] = counter.value;
    }
    RatioReporter::ReportRuns(runs);
  }
  std::map<std::string, double> counters;
};

std::string name(const char* benchmark) { return std::string(benchmark) + "/iterations:1/real_time"; }

}  // namespace
}  // namespace orvane::export_

int main(int argc, char** argv) {
  using namespace orvane::export_;
  if (!orvane::render::ensureGuiRuntime()) return 1;
  ExportReporter reporter;
  if (!orvane::bench_support::runBenchmarks(argc, argv, reporter)) return 1;
  int status = reporter.failed ? 1 : 0;
  const auto time = [&](const char* b) {
    const auto found = reporter.times.find(name(b));
    return found == reporter.times.end() ? 0.0 : found->second;
  };
  const auto check = [&](const char* what, double ratio, double target) {
    if (ratio <= 0) return;
    const bool met = ratio <= target;
    std::printf("%-66s %6.2fx (target: at most %.1fx) %s\n", what, ratio, target, met ? "met" : "MISSED");
    if (!met) status = 1;
  };
  const double footage = time("BM_ExportFootage1080p"), decode = time("BM_FFmpegDecodeSources"),
               x264 = time("BM_X264FootageFrames");
  if (footage > 0 && decode > 0 && x264 > 0) {
    check("1080p footage export against FFmpeg decode + libx264 encode", footage / (decode + x264), 1.5);
  }
  const double motion = time("BM_ExportMotion1080p"), motionX264 = time("BM_X264MotionFrames");
  if (motion > 0 && motionX264 > 0) check("Motion graphics export against libx264 alone", motion / motionX264, 1.3);
  const auto counter = [&](const char* b, const char* c) {
    const auto found = reporter.counters.find(name(b) + ":" + c);
    return found == reporter.counters.end() ? 0.0 : found->second;
  };
  if (const double peak = counter("BM_Export4K", "peakRSS_MiB"); peak > 0) {
    const bool met = peak < 2048;
    std::printf("%-66s %6.0f MiB (target: under 2048 MiB) %s; %.1f fps\n", "4K export peak resident memory", peak,
                met ? "met" : "MISSED", counter("BM_Export4K", "fps"));
    if (!met) status = 1;
  }
  for (const auto& [b, preset] : {std::pair{"BM_X264FootageFrames", "veryfast"}, {"BM_X264PresetFaster", "faster"},
                                  {"BM_X264PresetFast", "fast"}}) {
    if (counter(b, "fps") > 0) {
      std::printf("libx264 %-9s at 16 Mbps on the footage frames: %6.1f fps, luma PSNR %.2f dB\n", preset,
                  counter(b, "fps"), counter(b, "psnrY_dB"));
    }
  }
  return status;
}
