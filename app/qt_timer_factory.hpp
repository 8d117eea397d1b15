#pragma once
// The autosave debounce on the Qt event loop: each timer is a single-shot
// QTimer of the main thread. Owned by the application object; main thread.

#include "document/autosave_service.hpp"

namespace orvane::app {

class QtOneShotTimerFactory final : public document::OneShotTimerFactory {
 public:
  std::unique_ptr<document::OneShotTimer> start(std::chrono::milliseconds delay,
                                                std::function<void()> callback) override;
};

}  // namespace orvane::app
