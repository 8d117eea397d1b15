// Benchmark of the audio effects in the mix: eight stereo tracks at 48 kHz,
// each through its own tap with echo, reverb and a pitch shift (half of them
// keeping the duration, half linked), panned and summed to stereo.
//
// BM_CompositionMix runs the real thing: eight audio layers over WAV files
// assembled into a timed composition, with the effect taps made by
// makeEffectTap, read through the composition reader's mix (decoding,
// volume, pan, taps, sum). BM_EightTrackMix is the effects and a plain sum
// alone, on sources in memory, in blocks of 1024 frames; BM_OneEffect each
// effect alone on one track.
//
// Prints how many times faster than real time the mixes run and exits
// non-zero when the composition's mix is below 50 times, or when a block of
// the effects allocates after warm-up.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <memory>
#include <vector>

#include "audio/audio_mix_tap.hpp"
#include "bench/allocation_counter.hpp"
#include "bench/ratio_reporter.hpp"
#include "core/project.hpp"
#include "media/composition_assembler.hpp"
#include "media/composition_reader.hpp"
#include "tests/audio/audio_test_support.hpp"

namespace {

using orvane::audio::AudioEffectSnapshot;
using orvane::audio::AudioMixTap;

constexpr int kRate = 48000;
constexpr int kBlock = 1024;
constexpr int kTracks = 8;
constexpr double kSeconds = 4;
constexpr double kTargetTimesRealTime = 50;

// A tone with a little noise, different for each track.
std::vector<float> source(int track) {
  const auto frames = static_cast<std::size_t>(kSeconds * kRate);
  std::vector<float> v(frames * 2);
  unsigned seed = 12345U + static_cast<unsigned>(track);
  const double f = 110.0 * (track + 1);
  for (std::size_t i = 0; i < frames; ++i) {
    seed = seed * 1664525U + 1013904223U;
    const float noise = static_cast<float>(seed >> 9) / static_cast<float>(1U << 23) - 0.5f;
    const auto s = static_cast<float>(0.4 * std::sin(2 * M_PI * f * static_cast<double>(i) / kRate));
    v[2 * i] = s + 0.05f * noise;
    v[2 * i + 1] = s - 0.05f * noise;
  }
  return v;
}

AudioEffectSnapshot everything(int track) {
  AudioEffectSnapshot s;
  s.echoMix = 0.35;
  s.echoDelayMs = 180 + 20 * track;
  s.echoFeedback = 0.4;
  s.reverbMix = 0.3;
  s.reverbDecay = 0.6;
  s.pitchRatio = std::pow(2.0, (track % 2 == 0 ? 3 : -5) / 12.0);
  s.pitchMode = track % 2 == 0 ? orvane::core::AudioPitchMode::keepDuration : orvane::core::AudioPitchMode::linked;
  return s;
}

struct Mix {
  std::vector<std::vector<float>> sources;
  std::vector<std::shared_ptr<AudioMixTap>> taps;
  std::vector<float> track = std::vector<float>(kBlock * 2);
  std::vector<float> sum = std::vector<float>(kBlock * 2);
  std::vector<float> pans;  // left gain per track; right is its mirror

  explicit Mix(const std::vector<AudioEffectSnapshot>& snapshots) {
    for (std::size_t t = 0; t < snapshots.size(); ++t) {
      sources.push_back(source(static_cast<int>(t)));
      taps.push_back(std::make_shared<AudioMixTap>(snapshots[t]));
      taps.back()->prepare({kRate, 2}, kBlock);
      pans.push_back(static_cast<float>(0.3 + 0.4 * static_cast<double>(t) / kTracks));
    }
  }

  // Mixes the block at frame start into sum.
  void block(std::size_t start) {
    std::fill(sum.begin(), sum.end(), 0.0f);
    for (std::size_t t = 0; t < taps.size(); ++t) {
      std::copy_n(sources[t].begin() + static_cast<std::ptrdiff_t>(start * 2), kBlock * 2, track.begin());
      taps[t]->process(track.data(), kBlock);
      const float left = pans[t], right = 1 - pans[t];
      for (int f = 0; f < kBlock; ++f) {
        sum[static_cast<std::size_t>(2 * f)] += track[static_cast<std::size_t>(2 * f)] * left;
        sum[static_cast<std::size_t>(2 * f + 1)] += track[static_cast<std::size_t>(2 * f + 1)] * right;
      }
    }
  }

  // The whole length once.
  void run() {
    const std::size_t frames = sources[0].size() / 2;
    for (std::size_t start = 0; start + kBlock <= frames; start += kBlock) block(start);
    benchmark::DoNotOptimize(sum.data());
  }
};

double audioSecondsPerRun() { return std::floor(kSeconds * kRate / kBlock) * kBlock / kRate; }

bool allocatedInBlocks = false;

void BM_EightTrackMix(benchmark::State& state) {
  std::vector<AudioEffectSnapshot> snapshots;
  for (int t = 0; t < kTracks; ++t) snapshots.push_back(everything(t));
  Mix mix(snapshots);
  mix.run();  // warm-up
  const std::size_t before = orvane::bench_support::allocationCount.load();
  mix.run();
  if (orvane::bench_support::allocationCount.load() != before) allocatedInBlocks = true;
  for (auto _ : state) mix.run();
  state.counters["x_realtime"] = benchmark::Counter(audioSecondsPerRun() * static_cast<double>(state.iterations()),
                                                    benchmark::Counter::kIsRate);
}
BENCHMARK(BM_EightTrackMix)->Unit(benchmark::kMillisecond)->UseRealTime();

// One track with one effect: 0 echo, 1 reverb, 2 pitch keeping the
// duration, 3 linked pitch, 4 bypass.
void BM_OneEffect(benchmark::State& state) {
  AudioEffectSnapshot s;
  switch (state.range(0)) {
    case 0: s.echoMix = 0.35; break;
    case 1: s.reverbMix = 0.3; break;
    case 2: s.pitchRatio = 1.2; break;
    case 3: s.pitchRatio = 1.2; s.pitchMode = orvane::core::AudioPitchMode::linked; break;
    default: break;
  }
  Mix mix({s});
  mix.run();
  for (auto _ : state) mix.run();
  state.counters["x_realtime"] = benchmark::Counter(audioSecondsPerRun() * static_cast<double>(state.iterations()),
                                                    benchmark::Counter::kIsRate);
}
BENCHMARK(BM_OneEffect)->ArgName("effect")->DenseRange(0, 4)->Unit(benchmark::kMillisecond)->UseRealTime();

// Eight audio layers with their effects over eight WAV files.
struct CompositionFixture {
  orvane::audio::test::TempFolder folder;
  orvane::core::OVProject project = orvane::core::OVProject::starter();

  CompositionFixture() {
    using namespace orvane::core;
    const OVTime length = OVTime::fromSeconds(kSeconds);
    for (int t = 0; t < kTracks; ++t) {
      const auto file = folder / ("track" + std::to_string(t) + ".wav");
      orvane::audio::test::writeFloatWav(file, source(t), kRate, 2);
      MediaAsset asset;
      asset.kind = MediaKind::audio;
      asset.path = file.string();
      asset.duration = length;
      asset.hasAudioTrack = true;
      asset.audioChannelCount = 2;
      asset.audioSampleRate = kRate;
      project.assets.mutate().push_back(asset);
      Layer layer("Track", LayerContent::audio(asset.id), OVTimeRange(OVTime::zero, length));
      layer.audio.echoMix = 35;
      layer.audio.echoDelayMs = 180 + 20 * t;
      layer.audio.echoFeedback = 40;
      layer.audio.reverbMix = 30;
      layer.audio.reverbDecay = 60;
      layer.audio.pitchSemitones = t % 2 == 0 ? 3 : -5;
      layer.audio.pitchMode = t % 2 == 0 ? AudioPitchMode::keepDuration : AudioPitchMode::linked;
      layer.audio.pan = AnimatedProperty::double_(-60 + 15 * t);
      project.updateActiveComposition([&](Composition& c) { c.layers.push_back(layer); });
    }
  }
};

void BM_CompositionMix(benchmark::State& state) {
  CompositionFixture fixture;
  orvane::media::CompositionAssembler assembler;
  assembler.tapMaker = orvane::audio::makeEffectTap();
  auto assembled = assembler.assemble(*fixture.project.activeComposition(), fixture.project, 1.0);
  if (!assembled) {
    state.SkipWithError("the composition could not be assembled");
    return;
  }
  if (!assembled->audioTapRetention || assembled->audioTapRetention->taps.size() != kTracks) {
    state.SkipWithError("the layers got no effect taps");
    return;
  }
  orvane::media::CompositionReader reader(std::move(*assembled));
  const double seconds = audioSecondsPerRun();
  std::vector<float> out(static_cast<std::size_t>(seconds * kRate) * 2);
  for (auto _ : state) {
    if (!reader.readAudio(orvane::core::OVTime::zero, out)) {
      state.SkipWithError("the mix could not be read");
      return;
    }
    benchmark::DoNotOptimize(out.data());
  }
  state.counters["x_realtime"] =
      benchmark::Counter(seconds * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_CompositionMix)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
  orvane::bench_support::RatioReporter reporter;
  if (!orvane::bench_support::runBenchmarks(argc, argv, reporter)) return 1;

  bool missed = reporter.failed;
  // Times are in milliseconds.
  const auto timesRealTime = [&](const char* name) {
    const auto it = reporter.times.find(name);
    return it == reporter.times.end() ? 0.0 : audioSecondsPerRun() * 1000 / it->second;
  };
  if (const double x = timesRealTime("BM_EightTrackMix/real_time"); x > 0) {
    std::printf("8 tracks' effects (echo, reverb, pitch) and a plain stereo sum: x %.1f real time\n", x);
  }
  if (const double x = timesRealTime("BM_CompositionMix/real_time"); x > 0) {
    std::printf("8 layers with echo, reverb and pitch through the composition's mix: x %.1f real time (target x %.0f)\n",
                x, kTargetTimesRealTime);
    if (x < kTargetTimesRealTime) missed = true;
  }
  if (allocatedInBlocks) {
    std::printf("the mix allocated while processing blocks\n");
    missed = true;
  }
  return missed ? 1 : 0;
}
