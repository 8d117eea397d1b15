#pragma once
// Helpers of the audio tests: WAV files of 32-bit float samples written
// from a list, so that peaks survive decoding exactly, and the media tests'
// stand-in for the main thread's queue.

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "tests/media/main_queue.hpp"

namespace orvane::audio::test {

// Writes interleaved samples as an IEEE float WAV file.
inline void writeFloatWav(const std::filesystem::path& path, const std::vector<float>& samples, int sampleRate,
                          int channels) {
  std::ofstream out(path, std::ios::binary);
  const auto u32 = [&](std::uint32_t v) { out.write(reinterpret_cast<const char*>(&v), 4); };
  const auto u16 = [&](std::uint16_t v) { out.write(reinterpret_cast<const char*>(&v), 2); };
  const auto dataBytes = static_cast<std::uint32_t>(samples.size() * sizeof(float));
  out.write("RIFF", 4);
  u32(36 + dataBytes);
  out.write("WAVEfmt ", 8);
  u32(16);
  u16(3);  // IEEE float
  u16(static_cast<std::uint16_t>(channels));
  u32(static_cast<std::uint32_t>(sampleRate));
  u32(static_cast<std::uint32_t>(sampleRate * channels * 4));
  u16(static_cast<std::uint16_t>(channels * 4));
  u16(32);
  out.write("data", 4);
  u32(dataBytes);
  out.write(reinterpret_cast<const char*>(samples.data()), static_cast<std::streamsize>(dataBytes));
}

// A square wave of the given amplitude that flips every `half` samples, so
// that any run of `half` or more samples holds the amplitude exactly.
inline std::vector<float> square(std::size_t frames, int channels, float amplitude, int half = 5) {
  std::vector<float> v(frames * static_cast<std::size_t>(channels));
  for (std::size_t f = 0; f < frames; ++f) {
    const float s = (f / static_cast<std::size_t>(half)) % 2 == 0 ? amplitude : -amplitude;
    for (int c = 0; c < channels; ++c) v[f * static_cast<std::size_t>(channels) + static_cast<std::size_t>(c)] = s;
  }
  return v;
}

// A folder of its own under the system's temporary folder, removed at the end.
class TempFolder {
 public:
  TempFolder() {
    std::random_device random;
    path_ = std::filesystem::temp_directory_path() / ("orvane-audio-test-" + std::to_string(random()));
    std::filesystem::create_directories(path_);
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

using media::testing::MainQueue;

}  // namespace orvane::audio::test
