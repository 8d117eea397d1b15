#pragma once
// The system clipboard as the edit operations see it: data under type
// names, replaced as a whole on every write. The desktop implements it over
// QClipboard, mapping the program's own types to the MIME types
// "application/x-<type>" (so "com.brightfold.orvane.layers" travels as
// "application/x-com.brightfold.orvane.layers") and passing "text/plain" and
// "text/html" through. MemoryPasteboard serves tests and headless use.
// Main thread only, like the system clipboard behind it.

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace orvane::commands {

class Pasteboard {
 public:
  // UTF-8 text.
  static constexpr std::string_view plainTextType = "text/plain";
  // Rich text as simple HTML, the form desktop clipboards carry it in.
  static constexpr std::string_view richTextType = "text/html";

  virtual ~Pasteboard() = default;

  // The bytes stored under type, or none.
  virtual std::optional<std::string> data(std::string_view type) const = 0;
  // Removes everything, of every type.
  virtual void clear() = 0;
  // Stores bytes under type beside the other types there, replacing that
  // type's earlier bytes.
  virtual void setData(std::string_view type, std::string bytes) = 0;

  bool contains(std::string_view type) const { return data(type).has_value(); }
};

// A pasteboard in memory, private to its owner.
class MemoryPasteboard final : public Pasteboard {
 public:
  std::optional<std::string> data(std::string_view type) const override;
  void clear() override;
  void setData(std::string_view type, std::string bytes) override;

 private:
  std::map<std::string, std::string, std::less<>> items_;
};

}  // namespace orvane::commands
