// Benchmarks of the media engine's video decoding, on clips written at the
// start of the run:
//   - a 10 s 1920 × 1080, 30 fps H.264 clip decoded from start to end into
//     the renderer's pictures through VideoDecoder, against FFmpeg's own
//     decode of the same file to 8-bit BGRA (the codec with the same threads,
//     then swscale) in the same run; target: at most 1.25 times as long;
//   - jumps to random frames of a 60 s 1080p clip with a key frame every 2 s
//     through one decoder: median and worst time of a jump; target: a median
//     of at most 60 ms.
// The program prints every figure against its target and exits non-zero when
// one is missed.

#include <benchmark/benchmark.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "bench/ratio_reporter.hpp"
#include "media/video_decoder.hpp"
#include "render/gui_runtime.hpp"
// The clip writers of the media tests; a benchmark program is built from its
// one source file, so they come in here.
#include "tests/media/media_fixtures.cpp"

namespace {

using namespace orvane;
using core::FrameRate;

constexpr int kSequentialFrames = 300;  // 10 s at 30 fps
constexpr int kSeekFrames = 1800;       // 60 s at 30 fps
constexpr int kSeeks = 40;

media::testing::TempFolder& folder() {
  static media::testing::TempFolder made;
  return made;
}

std::filesystem::path clip(const char* name, int frames, int keyFrameInterval) {
  const std::filesystem::path path = folder() / name;
  if (!std::filesystem::exists(path)) {
    media::testing::VideoClipSpec spec;
    spec.width = 1920, spec.height = 1080;
    spec.frameCount = frames;
    spec.keyFrameInterval = keyFrameInterval;
    spec.busyPicture = true;
    spec.preset = "ultrafast";
    if (const std::string failed = media::testing::writeVideoClip(path, spec); !failed.empty()) {
      std::fprintf(stderr, "could not write %s: %s\n", name, failed.c_str());
      std::exit(1);
    }
  }
  return path;
}

const std::filesystem::path& sequentialClip() {
  static const std::filesystem::path path = clip("sequential.mp4", kSequentialFrames, 60);
  return path;
}

// Reads every frame of the sequential clip through one decoder, each with
// readFrame(decoder, time), which gives the frame (or nothing) to keep alive.
template <typename ReadFrame>
void decodeSequentialClip(benchmark::State& state, ReadFrame readFrame) {
  const auto& path = sequentialClip();
  for (auto _ : state) {
    auto decoder = media::VideoDecoder::open(path);
    if (!decoder) {
      state.SkipWithError("open failed");
      return;
    }
    for (int n = 0; n < kSequentialFrames; ++n) {
      auto frame = readFrame(**decoder, FrameRate::fps30.timeForFrame(n));
      if (!frame) {
        state.SkipWithError("decode failed");
        return;
      }
      benchmark::DoNotOptimize(frame);
    }
  }
  state.SetItemsProcessed(state.iterations() * kSequentialFrames);
}

void BM_VideoDecoderSequential(benchmark::State& state) {
  decodeSequentialClip(state, [](media::VideoDecoder& decoder, const core::OVTime& t) { return decoder.frameAt(t); });
}
BENCHMARK(BM_VideoDecoderSequential)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

// The same reader to 8-bit BGRA (as previews and thumbnails take it): the
// cost of the reader itself, without the renderer's float pictures.
void BM_VideoDecoderSequentialBgra(benchmark::State& state) {
  decodeSequentialClip(state, [](media::VideoDecoder& decoder, const core::OVTime& t) {
    return decoder.bgraFrameAt(t, 1920, 1080);
  });
}
BENCHMARK(BM_VideoDecoderSequentialBgra)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

// FFmpeg alone: demux, decode with the codec's threads, swscale to BGRA.
void BM_FFmpegSequential(benchmark::State& state) {
  const auto& path = sequentialClip();
  for (auto _ : state) {
    AVFormatContext* format = nullptr;
    avformat_open_input(&format, path.c_str(), nullptr, nullptr);
    avformat_find_stream_info(format, nullptr);
    const int index = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    const AVCodec* codec = avcodec_find_decoder(format->streams[index]->codecpar->codec_id);
    AVCodecContext* context = avcodec_alloc_context3(codec);
    avcodec_parameters_to_context(context, format->streams[index]->codecpar);
    context->thread_count = 0;
    context->thread_type = FF_THREAD_FRAME | FF_THREAD_SLICE;
    avcodec_open2(context, codec, nullptr);
    AVPacket* packet = av_packet_alloc();
    AVFrame* frame = av_frame_alloc();
    SwsContext* sws = nullptr;
    std::vector<std::uint8_t> bgra(1920 * 1080 * 4);
    int frames = 0;
    const auto drain = [&] {
      while (avcodec_receive_frame(context, frame) == 0) {
        sws = sws_getCachedContext(sws, frame->width, frame->height, static_cast<AVPixelFormat>(frame->format),
                                   frame->width, frame->height, AV_PIX_FMT_BGRA, SWS_BILINEAR, nullptr, nullptr,
                                   nullptr);
        std::uint8_t* dst[4] = {bgra.data()};
        const int stride[4] = {frame->width * 4};
        sws_scale(sws, frame->data, frame->linesize, 0, frame->height, dst, stride);
        ++frames;
      }
    };
    while (av_read_frame(format, packet) >= 0) {
      if (packet->stream_index == index) avcodec_send_packet(context, packet);
      av_packet_unref(packet);
      drain();
    }
    avcodec_send_packet(context, nullptr);
    drain();
    if (frames != kSequentialFrames) state.SkipWithError("FFmpeg decoded a different number of frames");
    sws_freeContext(sws);
    av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&context);
    avformat_close_input(&format);
  }
  state.SetItemsProcessed(state.iterations() * kSequentialFrames);
}
BENCHMARK(BM_FFmpegSequential)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

// Jumps to random frames, forward and back, through one decoder; the
// counters carry the median and worst jump in milliseconds.
void BM_RandomSeek(benchmark::State& state) {
  static const std::filesystem::path path = clip("seek.mp4", kSeekFrames, 60);
  auto decoder = media::VideoDecoder::open(path);
  if (!decoder) {
    state.SkipWithError("open failed");
    return;
  }
  std::mt19937 random(11);
  std::uniform_int_distribution<int> pick(0, kSeekFrames - 1);
  std::vector<double> times;
  for (auto _ : state) {
    for (int i = 0; i < kSeeks; ++i) {
      const int n = pick(random);
      const auto start = std::chrono::steady_clock::now();
      auto frame = (*decoder)->frameAt(FrameRate::fps30.timeForFrame(n));
      const auto end = std::chrono::steady_clock::now();
      if (!frame || media::testing::readFrameNumber(frame->image) != n % 1024) {
        state.SkipWithError("wrong frame after a jump");
        return;
      }
      times.push_back(std::chrono::duration<double, std::milli>(end - start).count());
    }
  }
  std::sort(times.begin(), times.end());
  state.counters["median_ms"] = times[times.size() / 2];
  state.counters["worst_ms"] = times.back();
}
BENCHMARK(BM_RandomSeek)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

// Keeps the seek counters for the summary.
class SeekReporter : public bench_support::RatioReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      for (const auto& [name, counter] : run.counters) counters[name] = counter.value;
    }
    RatioReporter::ReportRuns(runs);
  }
  std::map<std::string, double> counters;
};

}  // namespace

int main(int argc, char** argv) {
  if (!render::ensureGuiRuntime()) return 1;
  SeekReporter reporter;
  if (!bench_support::runBenchmarks(argc, argv, reporter)) return 1;
  int status = reporter.failed ? 1 : 0;
  const double ratio =
      reporter.ratio("BM_VideoDecoderSequential/iterations:3/real_time", "BM_FFmpegSequential/iterations:3/real_time");
  if (ratio > 0) {
    const bool met = ratio <= 1.25;
    std::printf("%-62s %6.2fx (target: at most 1.25x) %s\n", "1080p30 decode to pictures against FFmpeg to BGRA",
                ratio, met ? "met" : "MISSED");
    if (!met) status = 1;
  }
  const double bgra = reporter.ratio("BM_VideoDecoderSequentialBgra/iterations:3/real_time",
                                     "BM_FFmpegSequential/iterations:3/real_time");
  if (bgra > 0) std::printf("%-62s %6.2fx\n", "The reader to BGRA against FFmpeg to BGRA", bgra);
  if (reporter.counters.count("median_ms")) {
    const double median = reporter.counters["median_ms"], worst = reporter.counters["worst_ms"];
    const bool met = median <= 60;
    std::printf("%-62s %6.1f ms (target: at most 60 ms) %s; worst %.1f ms\n",
                "Random jump in a 60 s 1080p clip, key frames every 2 s: median", median, met ? "met" : "MISSED",
                worst);
    if (!met) status = 1;
  }
  return status;
}
