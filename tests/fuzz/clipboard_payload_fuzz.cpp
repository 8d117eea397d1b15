// libFuzzer target for the clipboard's payload decoders: any bytes either
// decode or read as no payload, without crashing. Whatever decodes must
// survive being written and read again unchanged, so a payload the program
// accepts can be copied on.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Commands/clipboard_payload.hpp"

using orvane::commands::OVClipboard;

namespace {

template <class Decode>
void checkRoundTrip(std::string_view text, Decode&& decode) {
  const auto payload = decode(text);
  if (!payload) return;
  if (decode(OVClipboard::encode(*payload)) != payload) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  checkRoundTrip(text, OVClipboard::decodeLayers);
  checkRoundTrip(text, OVClipboard::decodeKeyframes);
  return 0;
}
