// The entrance, exit, emphasis, motion and opacity rows of the catalog.

#include "behaviors/behavior_builders.hpp"

namespace orvane::behaviors::builders {

namespace {
constexpr auto E = BehaviorCategory::entrance;
constexpr auto X = BehaviorCategory::exit;
constexpr auto M = BehaviorCategory::emphasis;
constexpr auto N = BehaviorCategory::motion;
constexpr auto O = BehaviorCategory::opacity;
}  // namespace

std::vector<Behavior> entranceBehaviors() {
  Behavior fadeIn = make(E, "entrance.fade-in", "Fade In", "Opacity 0 → 100, quick to read then settling",
                         leading(0.5), {opacity({k(0, 0, decelerate), k(1, 100, decelerate)})});
  // The keys do the fading; a layer fade left in place would double it.
  fadeIn.fadeInSeconds = 0;
  return {
      fadeIn,
      make(E, "entrance.fade-up", "Fade Up", "Rises into place and settles", leading(0.65),
           {opacity({k(0, 0, decelerate), k(1, 100, decelerate)}),
            positionOffset({k(0, {0, -140}, decelerate), k(1, {0, 0}, decelerate)})}),
      make(E, "entrance.fade-down", "Fade Down", "Settles down from above", leading(0.65),
           {opacity({k(0, 0, decelerate), k(1, 100, decelerate)}),
            positionOffset({k(0, {0, 140}, decelerate), k(1, {0, 0}, decelerate)})}),
      make(E, "entrance.slide-left", "Slide In Left", "Flies in from the right and eases to a stop", leading(0.7),
           {opacity({k(0, 0, decelerate), k(0.35, 100, linear), k(1, 100, linear)}),
            positionOffset({k(0, {420, 0}, glide), k(1, {0, 0}, glide)})}),
      make(E, "entrance.slide-right", "Slide In Right", "Flies in from the left and eases to a stop", leading(0.7),
           {opacity({k(0, 0, decelerate), k(0.35, 100, linear), k(1, 100, linear)}),
            positionOffset({k(0, {-420, 0}, glide), k(1, {0, 0}, glide)})}),
      make(E, "entrance.zoom-in", "Zoom In", "Scales up past 100% and settles back", leading(0.6),
           {opacity({k(0, 0, decelerate), k(1, 100, decelerate)}),
            scale({k(0, 62, overshoot), k(1, 100, decelerate)})}),
      make(E, "entrance.pop-in", "Pop In", "Snaps up from nothing with a bounce", leading(0.45),
           {opacity({k(0, 0, decelerate), k(0.25, 100, linear), k(1, 100, linear)}),
            scale({k(0, 20, decelerate), k(0.55, 116, decelerate), k(0.78, 96, decelerate), k(1, 100, decelerate)})}),
      make(E, "entrance.drop-in", "Drop In", "Falls in, squashes on landing, springs back", leading(0.7),
           {opacity({k(0, 0, decelerate), k(0.3, 100, linear), k(1, 100, linear)}),
            positionOffset({k(0, {0, 320}, accelerate), k(0.62, {0, 0}, decelerate), k(1, {0, 0}, linear)}),
            scale({k(0, {100, 100}, linear), k(0.62, {118, 82}, decelerate), k(0.82, {94, 106}, decelerate),
                   k(1, {100, 100}, decelerate)})}),
      make(E, "entrance.spin-in", "Spin In", "Whips around into place", leading(0.7),
           {opacity({k(0, 0, decelerate), k(1, 100, decelerate)}), rotation({k(0, -180, glide), k(1, 0, glide)}),
            scale({k(0, 55, overshoot), k(1, 100, decelerate)})}),
      make(E, "entrance.blur-in", "Blur In", "Rushes into focus from a soft, over-scaled blur", leading(0.6),
           {opacity({k(0, 0, decelerate), k(1, 100, decelerate)}),
            scale({k(0, 112, decelerate), k(1, 100, decelerate)})},
           {effect("blur.gaussian", "radius", {k(0, 48, decelerate), k(1, 0, decelerate)})}),
  };
}

std::vector<Behavior> exitBehaviors() {
  return {
      make(X, "exit.fade-out", "Fade Out", "Opacity 100 → 0 at the end of the clip", trailing(0.5),
           {opacity({k(0, 100, accelerate), k(1, 0, accelerate)})}),
      make(X, "exit.fade-up", "Fade Out Up", "Lifts away, gathering speed", trailing(0.6),
           {opacity({k(0, 100, accelerate), k(1, 0, accelerate)}),
            positionOffset({k(0, {0, 0}, accelerate), k(1, {0, 160}, accelerate)})}),
      make(X, "exit.fade-down", "Fade Out Down", "Drops away, gathering speed", trailing(0.6),
           {opacity({k(0, 100, accelerate), k(1, 0, accelerate)}),
            positionOffset({k(0, {0, 0}, accelerate), k(1, {0, -160}, accelerate)})}),
      make(X, "exit.slide-left", "Slide Out Left", "Pulls back, then shoots off to the left", trailing(0.6),
           {opacity({k(0, 100, linear), k(0.65, 100, accelerate), k(1, 0, linear)}),
            positionOffset({k(0, {0, 0}, anticipate), k(1, {-520, 0}, linear)})}),
      make(X, "exit.slide-right", "Slide Out Right", "Pulls back, then shoots off to the right", trailing(0.6),
           {opacity({k(0, 100, linear), k(0.65, 100, accelerate), k(1, 0, linear)}),
            positionOffset({k(0, {0, 0}, anticipate), k(1, {520, 0}, linear)})}),
      make(X, "exit.zoom-out", "Zoom Out", "Swells slightly, then collapses away", trailing(0.55),
           {opacity({k(0, 100, accelerate), k(1, 0, accelerate)}),
            scale({k(0, 100, decelerate), k(0.3, 108, accelerate), k(1, 40, accelerate)})}),
      make(X, "exit.pop-out", "Pop Out", "Snaps big, then vanishes", trailing(0.35),
           {opacity({k(0, 100, linear), k(0.5, 100, accelerate), k(1, 0, linear)}),
            scale({k(0, 100, decelerate), k(0.45, 124, accelerate), k(1, 10, accelerate)})}),
      make(X, "exit.spin-out", "Spin Out", "Spins off, shrinking as it goes", trailing(0.65),
           {opacity({k(0, 100, accelerate), k(1, 0, accelerate)}), rotation({k(0, 0, accelerate), k(1, 160, accelerate)}),
            scale({k(0, 100, accelerate), k(1, 45, accelerate)})}),
      make(X, "exit.blur-out", "Blur Out", "Pushes past the lens and smears out of focus", trailing(0.6),
           {opacity({k(0, 100, accelerate), k(1, 0, accelerate)}),
            scale({k(0, 100, accelerate), k(1, 116, accelerate)})},
           {effect("blur.gaussian", "radius", {k(0, 0, accelerate), k(1, 44, accelerate)})}),
  };
}

std::vector<Behavior> emphasisBehaviors() {
  return {
      make(M, "emphasis.pulse", "Pulse", "Breathes in and out across the clip", wholeLayer,
           {scale({k(0, 100, smooth), k(0.5, 114, smooth), k(1, 100, smooth)})}),
      make(M, "emphasis.heartbeat", "Heartbeat", "Two quick scale beats", leading(1),
           {scale({k(0, 100, linear), k(0.14, 122, decelerate), k(0.28, 100, accelerate), k(0.42, 132, decelerate),
                   k(0.62, 98, accelerate), k(0.72, 100, decelerate), k(1, 100, linear)})}),
      make(M, "emphasis.wiggle", "Wiggle", "Small rotation shake", leading(0.8),
           {rotation({k(0, 0, decelerate), k(0.12, -14, smooth), k(0.28, 12, smooth), k(0.44, -8, smooth),
                      k(0.6, 5, smooth), k(0.78, -2.5, smooth), k(1, 0, decelerate)})}),
      make(M, "emphasis.flash", "Flash", "Quick opacity blink", leading(0.5),
           {opacity({k(0, 100, hold), k(0.18, 0, hold), k(0.3, 100, hold), k(0.52, 0, hold), k(0.62, 100, decelerate),
                     k(1, 100, linear)})}),
      make(M, "emphasis.bounce", "Bounce", "Vertical bounce settle", leading(0.9),
           {positionOffset({k(0, {0, 0}, decelerate), k(0.3, {0, 110}, accelerate), k(0.52, {0, 0}, decelerate),
                            k(0.7, {0, 38}, accelerate), k(0.84, {0, 0}, decelerate), k(0.93, {0, 12}, accelerate),
                            k(1, {0, 0}, linear)})}),
      make(M, "emphasis.pop", "Pop", "Single punchy scale hit", leading(0.4),
           {scale({k(0, 100, decelerate), k(0.32, 134, decelerate), k(0.7, 96, decelerate), k(1, 100, decelerate)})}),
  };
}

std::vector<Behavior> motionBehaviors() {
  return {
      make(N, "motion.drift-right", "Drift Right", "Slow pan across the full clip", wholeLayer,
           {positionOffset({k(0, {-60, 0}, linear), k(1, {60, 0}, linear)})}),
      make(N, "motion.drift-left", "Drift Left", "Slow pan the other way", wholeLayer,
           {positionOffset({k(0, {60, 0}, linear), k(1, {-60, 0}, linear)})}),
      make(N, "motion.ken-burns-in", "Ken Burns In", "Subtle zoom toward the subject", wholeLayer,
           {scale({k(0, 100, linear), k(1, 118, linear)})}),
      make(N, "motion.ken-burns-out", "Ken Burns Out", "Subtle zoom away", wholeLayer,
           {scale({k(0, 118, linear), k(1, 100, linear)})}),
      make(N, "motion.float", "Float", "Soft vertical float loop feel", wholeLayer,
           {positionOffset({k(0, {0, 0}, easeInOut), k(0.5, {0, 24}, easeInOut), k(1, {0, 0}, easeInOut)})}),
      make(N, "motion.orbit", "Orbit", "Arc around while rotating slightly", wholeLayer,
           {positionOffset({k(0, {-40, 0}, easeInOut), k(0.5, {0, 36}, easeInOut), k(1, {40, 0}, easeInOut)}),
            rotation({k(0, -8, easeInOut), k(1, 8, easeInOut)})}),
  };
}

std::vector<Behavior> opacityBehaviors() {
  return {
      make(O, "opacity.fade-in-full", "Fade In (Full Clip)", "Opacity rises across the whole duration", wholeLayer,
           {opacity({k(0, 0, linear), k(1, 100, linear)})}),
      make(O, "opacity.fade-out-full", "Fade Out (Full Clip)", "Opacity falls across the whole duration", wholeLayer,
           {opacity({k(0, 100, linear), k(1, 0, linear)})}),
      make(O, "opacity.dip-to-black", "Dip Through Black", "Fade out then back in mid-clip", wholeLayer,
           {opacity({k(0, 100, easeIn), k(0.45, 0, easeInOut), k(0.55, 0, easeInOut), k(1, 100, easeOut)})}),
      make(O, "opacity.ghost", "Ghost", "Hold at 40% opacity for a translucent look", leading(0.4),
           {opacity({k(0, 100, accelerate), k(1, 40, accelerate)})}),
  };
}

}  // namespace orvane::behaviors::builders
