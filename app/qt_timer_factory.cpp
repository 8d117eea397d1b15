#include "app/qt_timer_factory.hpp"

#include <QCoreApplication>
#include <QTimer>
#include <memory>
#include <utility>

namespace orvane::app {

namespace {

struct TimerState {
  bool cancelled = false;
  std::function<void()> callback;
};

// The QTimer belongs to Qt until it fires; the handle only marks it
// cancelled. So no timer object is ever destroyed inside its own timeout,
// even when the callback drops the handle that started it.
class QtOneShotTimer final : public document::OneShotTimer {
 public:
  explicit QtOneShotTimer(std::shared_ptr<TimerState> state) : state_(std::move(state)) {}
  ~QtOneShotTimer() override { cancel(); }
  // The callback goes at once: a drag restarts the autosave debounce at
  // every tick, and each cancelled callback would otherwise keep its copy
  // of the project alive until its timer runs out.
  void cancel() override {
    state_->cancelled = true;
    state_->callback = nullptr;
  }

 private:
  std::shared_ptr<TimerState> state_;
};

}  // namespace

std::unique_ptr<document::OneShotTimer> QtOneShotTimerFactory::start(std::chrono::milliseconds delay,
                                                                     std::function<void()> callback) {
  auto state = std::make_shared<TimerState>();
  state->callback = std::move(callback);
  QTimer::singleShot(delay, Qt::CoarseTimer, QCoreApplication::instance(), [state] {
    if (state->cancelled) return;
    state->cancelled = true;  // one shot
    const auto run = state->callback;
    if (run) run();
  });
  return std::make_unique<QtOneShotTimer>(std::move(state));
}

}  // namespace orvane::app
