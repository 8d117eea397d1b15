#pragma once
// Projects for the document tests, the fuzzing seeds and the benchmarks:
// one that uses every layer kind, every property value case and every
// optional field of the file, and large generated ones.

#include <string>

#include "core/project.hpp"

namespace orvane::document::testing_support {

using namespace core;

inline OVTime secs(double s) { return OVTime::fromSeconds(s); }

inline MaskPath triangle() {
  MaskPath p;
  p.closed = true;
  p.vertices = {{{0, 0}, {-1, 0}, {1, 0}}, {{100, 0}, {0, -2}, {0, 2}}, {{50, 80.25}, {}, {}}};
  return p;
}

// Keys of every pace and spatial form on a position, plus a key of every
// value case on an effect.
inline Layer animatedTextLayer() {
  TextContent text;
  text.string = "Hello, \"world\" — ünïcödé\n2nd line";
  text.boxSize = OVSize{800, 200};
  text.hasShadow = true;
  Layer l("Title", LayerContent::text(text), {secs(0.5), secs(4)});
  l.transform.position.setKeyframes({
      Keyframe(secs(0.5), PropertyValue::point(10, 20), InterpolationMode::bezier, BezierHandles::overshoot,
               SpatialInterpolation::bezier, SpatialHandles{{-5, 0}, {5, 1}}),
      Keyframe(secs(1.5), PropertyValue::point(300, 200), InterpolationMode::hold),
      Keyframe(secs(2.5), PropertyValue::point(640.5, 360), InterpolationMode::easeInOut, std::nullopt,
               SpatialInterpolation::linear),
  });
  l.transform.opacity.setKeyframes({Keyframe(secs(0.5), PropertyValue::double_(0)),
                                    Keyframe(secs(1), PropertyValue::double_(100), InterpolationMode::easeOut)});
  l.textReveal.setKeyframes({Keyframe(secs(0.5), PropertyValue::double_(0)), Keyframe(secs(2), PropertyValue::double_(100))});
  l.transform.skew = AnimatedProperty::double_(12.5);
  l.transform.flipHorizontally = true;
  EffectInstance fx;
  fx.effectID = "gaussianBlur";
  fx.isEnabled = false;
  fx.parameters = {
      {"amount", AnimatedProperty(PropertyValue::double_(12), {Keyframe(secs(1), PropertyValue::double_(3))})},
      {"center", AnimatedProperty::point(0.5, 0.25)},
      {"extent", AnimatedProperty::size(10, 20)},
      {"tint", AnimatedProperty::color({0.1, 0.2, 0.3, 0.4})},
      {"invert", AnimatedProperty::bool_(true)},
      {"levels", AnimatedProperty(PropertyValue::integer(-7))},
      {"mode", AnimatedProperty::choice("soft")},
      {"label", AnimatedProperty(PropertyValue::text("a \\ b"))},
  };
  l.effects = SharedVector<EffectInstance>(std::vector{fx});
  LayerMask mask;
  mask.name = "Cut-out";
  mask.inverted = true;
  mask.path = AnimatedProperty(PropertyValue::maskPath(triangle()),
                               {Keyframe(secs(1), PropertyValue::maskPath(triangle())),
                                Keyframe(secs(2), PropertyValue::maskPath(MaskPath::rectangleIn({50, 50}, 2)))});
  mask.feather = AnimatedProperty::double_(4);
  l.masks = SharedVector<LayerMask>(std::vector{mask});
  l.crop.left = AnimatedProperty::double_(0.125);
  l.markers = SharedVector<Marker>(std::vector{Marker{Uuid::make(), secs(1), "beat", OVColor::red_}});
  l.labelColor = LayerLabelColor::none;
  l.blendMode = OVBlendMode::multiply;
  l.fadeIn = secs(0.25);
  l.isExpandedInTimeline = true;
  return l;
}

inline OVProject sampleProject() {
  MediaFolder folder;
  folder.name = "Footage";
  MediaFolder sub;
  sub.name = "B-roll";
  sub.parentFolderID = folder.id;

  MediaAsset video;
  video.name = "clip.mov";
  video.kind = MediaKind::video;
  video.path = "/media/clip.mov";
  video.bookmark = Bytes{0, 1, 2, 250, 255};
  video.duration = OVTime(1001 * 240, 24000);
  video.naturalSize = {3840, 2160};
  video.frameRate = FrameRate::fps23_976;
  video.hasVideoTrack = video.hasAudioTrack = true;
  video.audioChannelCount = 2;
  video.audioSampleRate = 48000;
  video.fileSizeBytes = 123456789012;
  video.folderID = sub.id;
  MediaAsset audio = video;
  audio.id = Uuid::make();
  audio.name = "voice.wav";
  audio.kind = MediaKind::audio;
  audio.path = "Media/voice.wav";
  audio.bookmark.reset();
  audio.frameRate.reset();
  audio.folderID.reset();
  audio.hasVideoTrack = false;
  MediaAsset image = audio;
  image.id = Uuid::make();
  image.name = "logo.png";
  image.kind = MediaKind::image;
  image.path = "/media/logo.png";

  Composition nested;
  nested.name = "Nested";
  nested.size = {1080, 1920};
  nested.frameRate = FrameRate::fps29_97;
  nested.isTransparent = true;
  nested.backgroundColor = OVColor::clear;
  nested.workArea = OVTimeRange{secs(1), secs(2)};
  nested.layers.push_back(Layer("Card", LayerContent::solid({{0.5, 0.25, 1, 1}, {1080, 1920}}), {secs(0), secs(10)}));

  Composition main;
  main.name = "Main";
  main.motionBlurEnabled = true;
  main.motionBlurShutterAngle = 270;
  main.audioSampleRate = 44100;
  main.playheadTime = OVTime(7, 3);
  main.markers = SharedVector<Marker>(std::vector{Marker{Uuid::make(), secs(2), "Chorus", OVColor::white}});
  Layer text = animatedTextLayer();
  Layer shape("Star", LayerContent::shape({ShapeContent::ShapeType::star, {300, 300}, OVColor::white, false,
                                           OVColor::black, 3, true, 4, 7, 0.35}),
              {secs(0), secs(10)});
  shape.parentLayerID = text.id;
  shape.labelColor = LayerLabelColor::blue;
  Layer adjustment("Adjust", LayerContent::adjustment({1920, 1080}), {secs(1), secs(3)});
  Layer pre("Nested", LayerContent::precomposition(nested.id), {secs(0), secs(10)});
  pre.sourceStart = secs(-1);
  Layer videoLayer("clip.mov", LayerContent::video(video.id), {secs(0), secs(10)});
  videoLayer.audio.volume.setKeyframes({Keyframe(secs(0), PropertyValue::double_(0)), Keyframe(secs(1), PropertyValue::double_(80))});
  videoLayer.audio.echoMix = 25;
  videoLayer.audio.pitchMode = AudioPitchMode::linked;
  videoLayer.usesSourceAudio = false;
  videoLayer.isLocked = true;
  videoLayer.isSolo = true;
  Layer audioLayer("voice.wav", LayerContent::audio(audio.id), {secs(2), secs(3)});
  audioLayer.isEnabled = false;
  Layer imageLayer("logo.png", LayerContent::image(image.id), {secs(0), secs(5)});
  for (Layer* l : {&text, &shape, &adjustment, &pre, &videoLayer, &audioLayer, &imageLayer})
    main.layers.push_back(*l);

  Composition sequence;
  sequence.name = "Edit";
  sequence.editingMode = EditingMode::sequence;
  sequence.tracks = SharedVector<SequenceTrack>(Composition::defaultTracks());
  sequence.overlapsCrossfade = true;
  Layer a("A", LayerContent::video(video.id), {secs(0), secs(4)});
  Layer b("B", LayerContent::video(video.id), {secs(3), secs(4)});
  a.trackID = b.trackID = sequence.tracks[2].id;
  sequence.layers.push_back(b);
  sequence.layers.push_back(a);
  sequence.normalizeSequenceOrder();

  OVProject p("Sample Project", {main, nested, sequence});
  p.activeCompositionID = main.id;
  p.assets = SharedVector<MediaAsset>(std::vector{video, audio, image});
  p.mediaFolders = SharedVector<MediaFolder>(std::vector{folder, sub});
  BrowseFolder browse;
  browse.name = "Downloads";
  browse.path = "/home/u/Downloads";
  browse.bookmark = Bytes{9, 8, 7};
  p.browseFolders = SharedVector<BrowseFolder>(std::vector{browse});
  return p;
}

// layers text layers of properties animated properties with keys keys each.
inline OVProject largeProject(int layers, int properties, int keys) {
  Composition c;
  c.name = "Large";
  for (int i = 0; i < layers; ++i) {
    Layer l("Layer " + std::to_string(i), LayerContent::text({}), {secs(0), secs(10)});
    EffectInstance fx;
    fx.effectID = "colorControls";
    for (int p = 0; p < properties; ++p) {
      std::vector<Keyframe> frames;
      for (int k = 0; k < keys; ++k) {
        frames.emplace_back(OVTime(k * 20000, 600000), PropertyValue::double_(k * 1.5 + p),
                            InterpolationMode::easeInOut);
      }
      fx.parameters.emplace("p" + std::to_string(p), AnimatedProperty(PropertyValue::double_(0), frames));
    }
    l.effects = SharedVector<EffectInstance>(std::vector{fx});
    c.layers.push_back(std::move(l));
  }
  return OVProject("Large", {c});
}

}  // namespace orvane::document::testing_support
