// The scale, rotation, crop, effects, audio and text rows of the catalog.

#include "behaviors/behavior_builders.hpp"

namespace orvane::behaviors::builders {

namespace {
constexpr auto S = BehaviorCategory::scale;
constexpr auto R = BehaviorCategory::rotation;
constexpr auto C = BehaviorCategory::crop;
constexpr auto F = BehaviorCategory::effects;
constexpr auto A = BehaviorCategory::audio;
constexpr auto T = BehaviorCategory::text;
using Edge = core::LayerCrop::Edge;
}  // namespace

std::vector<Behavior> scaleBehaviors() {
  return {
      make(S, "scale.grow", "Grow", "Scale from 0% to 100%", leading(0.6),
           {opacity({k(0, 0, decelerate), k(1, 100, decelerate)}),
            scale({k(0, 0, overshoot), k(1, 100, decelerate)})}),
      make(S, "scale.shrink", "Shrink Away", "Scale to nothing at the end", trailing(0.6),
           {opacity({k(0, 100, accelerate), k(1, 0, accelerate)}),
            scale({k(0, 100, accelerate), k(1, 0, accelerate)})}),
      make(S, "scale.stretch-x", "Stretch X", "Horizontal squash-and-stretch entrance", leading(0.55),
           {scale({k(0, {140, 60}, easeOut), k(0.55, {90, 110}, easeInOut), k(1, {100, 100}, easeIn)}),
            opacity({k(0, 0, decelerate), k(1, 100, decelerate)})}),
      make(S, "scale.stretch-y", "Stretch Y", "Vertical squash-and-stretch entrance", leading(0.55),
           {scale({k(0, {60, 140}, easeOut), k(0.55, {110, 90}, easeInOut), k(1, {100, 100}, easeIn)}),
            opacity({k(0, 0, decelerate), k(1, 100, decelerate)})}),
  };
}

std::vector<Behavior> rotationBehaviors() {
  return {
      make(R, "rotation.tilt-in", "Tilt In", "Rotate from −20° to 0°", leading(0.7),
           {rotation({k(0, -20, decelerate), k(1, 0, decelerate)}),
            opacity({k(0, 0, decelerate), k(1, 100, decelerate)})}),
      make(R, "rotation.full-spin", "Full Spin", "One full turn over the clip", wholeLayer,
           {rotation({k(0, 0, linear), k(1, 360, linear)})}),
      make(R, "rotation.half-spin", "Half Spin", "180° turn across the clip", wholeLayer,
           {rotation({k(0, 0, smooth), k(1, 180, smooth)})}),
      make(R, "rotation.swing", "Swing", "Pendulum rotation settle", leading(1),
           {rotation({k(0, -18, easeOut), k(0.35, 12, easeInOut), k(0.65, -6, easeInOut), k(1, 0, easeIn)})}),
  };
}

std::vector<Behavior> cropBehaviors() {
  return {
      make(C, "crop.wipe-left", "Wipe In Left", "Reveal by opening the left crop edge", leading(0.8),
           {crop(Edge::left, {k(0, 900, easeOut), k(1, 0, easeIn)})}),
      make(C, "crop.wipe-right", "Wipe In Right", "Reveal by opening the right crop edge", leading(0.8),
           {crop(Edge::right, {k(0, 900, easeOut), k(1, 0, easeIn)})}),
      make(C, "crop.wipe-up", "Wipe In Up", "Reveal from the bottom crop", leading(0.8),
           {crop(Edge::bottom, {k(0, 700, easeOut), k(1, 0, easeIn)})}),
      make(C, "crop.iris", "Iris Open", "All four crop edges open together", leading(0.75),
           {crop(Edge::left, {k(0, 400, easeOut), k(1, 0, easeIn)}),
            crop(Edge::right, {k(0, 400, easeOut), k(1, 0, easeIn)}),
            crop(Edge::top, {k(0, 300, easeOut), k(1, 0, easeIn)}),
            crop(Edge::bottom, {k(0, 300, easeOut), k(1, 0, easeIn)})}),
  };
}

std::vector<Behavior> effectsBehaviors() {
  return {
      make(F, "effects.focus-pull", "Focus Pull", "Blur racks from soft to sharp", leading(1), {},
           {effect("blur.gaussian", "radius", {k(0, 18, easeInOut), k(1, 0, easeInOut)})}),
      make(F, "effects.desaturate-in", "Color Rise", "Saturation climbs from B&W to full colour", leading(1.2), {},
           {effect("color.saturation", "amount", {k(0, 0, easeOut), k(1, 1, easeIn)})}),
      make(F, "effects.exposure-flash", "Exposure Flash", "Brief exposure spike", leading(0.5), {},
           {effect("color.exposure", "ev", {k(0, 0, linear), k(0.35, 1.4, easeOut), k(1, 0, easeIn)})}),
      make(F, "effects.darken-mood", "Darken Mood", "Brightness dips for a moodier look", leading(0.8), {},
           {effect("color.brightness", "amount", {k(0, 0, easeIn), k(1, -0.2, easeOut)})}),
      make(F, "effects.sharpen-pop", "Sharpen Pop", "Sharpen eases in for punch", leading(0.6), {},
           {effect("sharpen", "amount", {k(0, 0, easeOut), k(1, 0.7, easeIn)})}),
  };
}

std::vector<Behavior> audioBehaviors() {
  return {
      make(A, "audio.fade-in", "Audio Fade In", "Volume rises from silence", leading(1),
           {audioVolume({k(0, 0, easeOut), k(1, 100, easeIn)})}),
      make(A, "audio.fade-out", "Audio Fade Out", "Volume falls to silence", trailing(1),
           {audioVolume({k(0, 100, easeIn), k(1, 0, easeOut)})}),
      make(A, "audio.pan-left-right", "Pan L → R", "Stereo pan across the clip", wholeLayer,
           {audioPan({k(0, -100, linear), k(1, 100, linear)})}),
      make(A, "audio.duck", "Duck", "Dip volume mid-clip then recover", wholeLayer,
           {audioVolume({k(0, 100, easeIn), k(0.4, 35, easeInOut), k(0.7, 35, easeInOut), k(1, 100, easeOut)})}),
  };
}

std::vector<Behavior> textBehaviors() {
  return {
      make(T, "text.type-on", "Type On Feel", "Slide up + fade — classic lower-third energy", leading(0.55),
           {opacity({k(0, 0, decelerate), k(1, 100, decelerate)}),
            positionOffset({k(0, {0, -36}, decelerate), k(1, {0, 0}, decelerate)})}),
      make(T, "text.headline-slam", "Headline Slam", "Heavy scale overshoot for titles", leading(0.5),
           {opacity({k(0, 0, decelerate), k(1, 100, decelerate)}),
            scale({k(0, 190, decelerate), k(0.6, 92, decelerate), k(1, 100, decelerate)})}),
      make(T, "text.whisper", "Whisper In", "Slow soft fade for captions", leading(1.2),
           {opacity({k(0, 0, linear), k(1, 100, linear)})}),
      make(T, "text.skew-in", "Skew In", "Shear resolves as the title lands", leading(0.6),
           {opacity({k(0, 0, decelerate), k(1, 100, decelerate)}), skew({k(0, 28, decelerate), k(1, 0, decelerate)}),
            positionOffset({k(0, {-40, 0}, decelerate), k(1, {0, 0}, decelerate)})}),
      make(T, "text.typewriter", "Typewriter", "Characters appear one at a time at a steady pace", leading(1.4),
           {textReveal({k(0, 0, linear), k(1, 100, linear)})}),
      make(T, "text.typewriter-fast", "Fast Type", "Snappy type-on for short titles and lower thirds", leading(0.6),
           {textReveal({k(0, 0, linear), k(1, 100, linear)})}),
      make(T, "text.type-and-settle", "Type & Settle", "Types on quickly, then the line eases up into place",
           leading(1),
           {textReveal({k(0, 0, linear), k(1, 100, linear)}),
            positionOffset({k(0, {0, -22}, decelerate), k(1, {0, 0}, decelerate)}),
            opacity({k(0, 0, decelerate), k(1, 100, decelerate)})}),
      make(T, "text.type-on-reverse", "Type Off", "Characters disappear one at a time at the end of the clip",
           trailing(0.8), {textReveal({k(0, 100, linear), k(1, 0, linear)})}),
      make(T, "text.line-reveal", "Reveal Behind Wipe", "A crop wipe uncovers the line from the left", leading(0.7),
           {cropOffset(Edge::right, {k(0, 4000, decelerate), k(1, 0, linear)})}),
  };
}

}  // namespace orvane::behaviors::builders
