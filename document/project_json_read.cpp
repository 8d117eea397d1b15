// Reading the project from JSON, record by record, with the file format's
// defaults. The top level is forgiving (an empty object is an empty
// project); compositions, layers and their parts are strict.

#include <cmath>

#include <nlohmann/json.hpp>

#include "core/base64.hpp"
#include "core/enum_text.hpp"
#include "document/json_reading.hpp"
#include "document/project_json.hpp"
#include "document/record_json.hpp"

namespace orvane::document {
namespace {

using namespace core;
using namespace json_reading;

// Times beyond this many seconds (about 31 years) cannot come from a real
// project, and arithmetic on them could overflow; such a file is damaged.
constexpr double kMaxFileSeconds = 1e9;

Uuid readUuid(const json& j, const Where& w) {
  const auto id = Uuid::parse(readString(j, w));
  if (!id) fail(w, "is not an identifier");
  return *id;
}

Timestamp readDate(const json& j, const Where& w) {
  const std::string text = readString(j, w);
  const auto t = parseISO8601(text);
  if (!t) throw ProjectCodecError::corruptData("Unreadable date \"" + text + "\".");
  return *t;
}

Bytes readBytes(const json& j, const Where& w) {
  auto bytes = base64Decode(readString(j, w));
  if (!bytes) fail(w, "is not Base64 data");
  return std::move(*bytes);
}

template <class E>
auto rawReader() {
  return [](const json& j, const Where& w) -> E {
    const auto v = fromRaw<E>(readString(j, w));
    if (!v) fail(w, "is not a known case");
    return *v;
  };
}

OVPoint readPoint(const json& j, const Where& w) {
  const Object o(j, w);
  return {required(o, "x", readDouble), required(o, "y", readDouble)};
}

OVSize readSize(const json& j, const Where& w) {
  const Object o(j, w);
  return {required(o, "w", readDouble), required(o, "h", readDouble)};
}

OVColor readColor(const json& j, const Where& w) {
  const Object o(j, w);
  return {required(o, "r", readDouble), required(o, "g", readDouble), required(o, "b", readDouble),
          required(o, "a", readDouble)};
}

OVTime readTime(const json& j, const Where& w) {
  const Object o(j, w);
  const std::int64_t value = required(o, "v", readInt);
  std::int64_t timescale = required(o, "ts", readInt);
  if (timescale <= 0) timescale = OVTime::defaultTimescale;
  if (timescale > std::numeric_limits<std::int32_t>::max()) fail(w, "has a timescale out of range");
  const OVTime t(value, static_cast<std::int32_t>(timescale));
  if (std::fabs(t.seconds()) > kMaxFileSeconds) fail(w, "is a time out of range");
  return t;
}

OVTimeRange readRange(const json& j, const Where& w) {
  const Object o(j, w);
  return {required(o, "s", readTime), required(o, "d", readTime)};
}

// Rates are not checked here: a zero is caught where the rate is used.
FrameRate readFrameRate(const json& j, const Where& w) {
  const Object o(j, w);
  return FrameRate::unchecked(required(o, "numerator", readInt32), required(o, "denominator", readInt32));
}

MaskVertex readVertex(const json& j, const Where& w) {
  const Object o(j, w);
  return {required(o, "p", readPoint), required(o, "i", readPoint), required(o, "o", readPoint)};
}

MaskPath readMaskPath(const json& j, const Where& w) {
  const Object o(j, w);
  MaskPath p;
  p.closed = required(o, "c", readBool);
  p.vertices = required(o, "v", listOf(readVertex));
  return p;
}

PropertyValue readValue(const json& j, const Where& w) {
  const Object o(j, w);
  const auto kind = required(o, "t", rawReader<PropertyValue::Kind>());
  using K = PropertyValue::Kind;
  switch (kind) {
    case K::double_: return PropertyValue::double_(required(o, "v", readDouble));
    case K::point: return PropertyValue::point(required(o, "v", readPoint));
    case K::size: return PropertyValue::size(required(o, "v", readSize));
    case K::color: return PropertyValue::color(required(o, "v", readColor));
    case K::bool_: return PropertyValue::bool_(required(o, "v", readBool));
    case K::integer: return PropertyValue::integer(required(o, "v", readInt));
    case K::choice: return PropertyValue::choice(required(o, "v", readString));
    case K::text: return PropertyValue::text(required(o, "v", readString));
    case K::maskPath: return PropertyValue::maskPath(required(o, "v", readMaskPath));
  }
  fail(w, "has an unknown tag");
}

BezierHandles readBezierHandles(const json& j, const Where& w) {
  const Object o(j, w);
  return {required(o, "outControl", readPoint), required(o, "inControl", readPoint)};
}

SpatialHandles readSpatialHandles(const json& j, const Where& w) {
  const Object o(j, w);
  return {required(o, "inTangent", readPoint), required(o, "outTangent", readPoint)};
}

Keyframe readKeyframe(const json& j, const Where& w) {
  const Object o(j, w);
  Keyframe k;
  k.id = required(o, "id", readUuid);
  k.time = required(o, "t", readTime);
  k.value = required(o, "v", readValue);
  k.mode = optional(o, "m", rawReader<InterpolationMode>(), InterpolationMode::linear);
  k.handles = optional(o, "h", [](const json& h, const Where& hw) {
    return std::optional<BezierHandles>(readBezierHandles(h, hw));
  }, std::optional<BezierHandles>());
  k.spatialMode = optional(o, "sm", rawReader<SpatialInterpolation>(), SpatialInterpolation::linear);
  k.spatialHandles = optional(o, "sh", readSpatialHandles, SpatialHandles::zero);
  return k;
}

// Keys come back sorted by time; tangents are the file's, not recomputed.
AnimatedProperty readProperty(const json& j, const Where& w) {
  const Object o(j, w);
  AnimatedProperty p(required(o, "b", readValue));
  p.setKeyframes(optional(o, "k", listOf(readKeyframe), std::vector<Keyframe>{}));
  return p;
}

Marker readMarker(const json& j, const Where& w) {
  const Object o(j, w);
  Marker m;
  m.id = required(o, "id", readUuid);
  m.time = required(o, "t", readTime);
  m.name = required(o, "n", readString);
  m.color = required(o, "c", readColor);
  return m;
}

TextContent readText(const json& j, const Where& w) {
  const Object o(j, w);
  TextContent t;
  t.string = required(o, "string", readString);
  t.fontName = required(o, "fontName", readString);
  t.fontSize = required(o, "fontSize", readDouble);
  t.color = required(o, "color", readColor);
  t.alignment = required(o, "alignment", rawReader<TextContent::Alignment>());
  t.lineSpacing = required(o, "lineSpacing", readDouble);
  t.letterSpacing = required(o, "letterSpacing", readDouble);
  t.strokeColor = required(o, "strokeColor", readColor);
  t.strokeWidth = required(o, "strokeWidth", readDouble);
  t.backgroundColor = required(o, "backgroundColor", readColor);
  t.backgroundPadding = required(o, "backgroundPadding", readDouble);
  t.shadowColor = required(o, "shadowColor", readColor);
  t.shadowOffset = required(o, "shadowOffset", readPoint);
  t.shadowBlur = required(o, "shadowBlur", readDouble);
  t.hasShadow = required(o, "hasShadow", readBool);
  t.boxSize = optional(o, "boxSize", [](const json& b, const Where& bw) {
    return std::optional<OVSize>(readSize(b, bw));
  }, std::optional<OVSize>());
  return t;
}

ShapeContent readShape(const json& j, const Where& w) {
  const Object o(j, w);
  ShapeContent s;
  s.type = required(o, "type", rawReader<ShapeContent::ShapeType>());
  s.size = required(o, "size", readSize);
  s.fillColor = required(o, "fillColor", readColor);
  s.isFilled = required(o, "isFilled", readBool);
  s.strokeColor = required(o, "strokeColor", readColor);
  s.strokeWidth = required(o, "strokeWidth", readDouble);
  s.isStroked = required(o, "isStroked", readBool);
  s.cornerRadius = required(o, "cornerRadius", readDouble);
  s.sideCount = required(o, "sideCount", readInt);
  s.innerRadiusRatio = required(o, "innerRadiusRatio", readDouble);
  return s;
}

SolidContent readSolid(const json& j, const Where& w) {
  const Object o(j, w);
  return {required(o, "color", readColor), required(o, "size", readSize)};
}

LayerContent readContent(const json& j, const Where& w) {
  const Object o(j, w);
  switch (required(o, "k", rawReader<LayerKind>())) {
    case LayerKind::video: return LayerContent::video(required(o, "a", readUuid));
    case LayerKind::audio: return LayerContent::audio(required(o, "a", readUuid));
    case LayerKind::image: return LayerContent::image(required(o, "a", readUuid));
    case LayerKind::text: return LayerContent::text(required(o, "tx", readText));
    case LayerKind::shape: return LayerContent::shape(required(o, "sh", readShape));
    case LayerKind::solid: return LayerContent::solid(required(o, "so", readSolid));
    case LayerKind::adjustment: return LayerContent::adjustment(required(o, "sz", readSize));
    case LayerKind::precomposition: return LayerContent::precomposition(required(o, "c", readUuid));
  }
  fail(w, "has an unknown kind");
}

LayerTransform readTransform(const json& j, const Where& w) {
  const Object o(j, w);
  LayerTransform t;
  t.position = required(o, "p", readProperty);
  t.scale = required(o, "s", readProperty);
  t.rotation = required(o, "r", readProperty);
  t.anchorPoint = required(o, "a", readProperty);
  t.opacity = required(o, "o", readProperty);
  t.skew = optional(o, "k", readProperty, AnimatedProperty::double_(0));
  t.flipHorizontally = optional(o, "fh", readBool, false);
  t.flipVertically = optional(o, "fv", readBool, false);
  return t;
}

LayerCrop readCrop(const json& j, const Where& w) {
  const Object o(j, w);
  LayerCrop c;
  c.left = required(o, "l", readProperty);
  c.top = required(o, "t", readProperty);
  c.right = required(o, "r", readProperty);
  c.bottom = required(o, "b", readProperty);
  return c;
}

LayerMask readMask(const json& j, const Where& w) {
  const Object o(j, w);
  LayerMask m;
  m.id = required(o, "id", readUuid);
  m.name = optional(o, "n", readString, std::string("Mask"));
  m.isEnabled = optional(o, "en", readBool, true);
  m.inverted = optional(o, "inv", readBool, false);
  m.path = required(o, "p", readProperty);
  m.feather = optional(o, "f", readProperty, AnimatedProperty::double_(0));
  return m;
}

std::map<std::string, AnimatedProperty> readParameters(const json& j, const Where& w) {
  const Object o(j, w);
  std::map<std::string, AnimatedProperty> out;
  for (const auto& [key, value] : j.items()) {
    if (value.is_null()) continue;
    const Where pw = w.child(key);
    out.emplace(key, readProperty(value, pw));
  }
  return out;
}

EffectInstance readEffect(const json& j, const Where& w) {
  const Object o(j, w);
  EffectInstance e;
  e.id = required(o, "id", readUuid);
  e.effectID = required(o, "e", readString);
  e.isEnabled = optional(o, "on", readBool, true);
  e.parameters = optional(o, "p", readParameters, std::map<std::string, AnimatedProperty>{});
  return e;
}

AudioProperties readAudio(const json& j, const Where& w) {
  const Object o(j, w);
  const AudioProperties d;
  AudioProperties a;
  a.volume = optional(o, "v", readProperty, d.volume);
  a.pan = optional(o, "p", readProperty, d.pan);
  a.isMuted = optional(o, "m", readBool, d.isMuted);
  a.normalizeGain = optional(o, "ng", readDouble, d.normalizeGain);
  a.echoMix = optional(o, "em", readDouble, d.echoMix);
  a.echoDelayMs = optional(o, "ed", readDouble, d.echoDelayMs);
  a.echoFeedback = optional(o, "ef", readDouble, d.echoFeedback);
  a.reverbMix = optional(o, "rm", readDouble, d.reverbMix);
  a.reverbDecay = optional(o, "rd", readDouble, d.reverbDecay);
  a.pitchSemitones = optional(o, "ps", readDouble, d.pitchSemitones);
  a.pitchCents = optional(o, "pc", readDouble, d.pitchCents);
  a.pitchMode = optional(o, "pm", rawReader<AudioPitchMode>(), d.pitchMode);
  return a;
}

std::optional<Uuid> optionalUuid(const Object& o, std::string_view key) {
  return optional(o, key, [](const json& j, const Where& w) { return std::optional<Uuid>(readUuid(j, w)); },
                  std::optional<Uuid>());
}

template <class T>
SharedVector<T> shared(std::vector<T> items) {
  return SharedVector<T>(std::move(items));
}

Layer readLayer(const json& j, const Where& w) {
  const Object o(j, w);
  Layer l;
  l.id = required(o, "id", readUuid);
  l.name = required(o, "n", readString);
  l.content = required(o, "c", readContent);
  l.timeRange = required(o, "tr", readRange);
  l.sourceStart = optional(o, "ss", readTime, OVTime::zero);
  l.isEnabled = optional(o, "en", readBool, true);
  l.isLocked = optional(o, "lk", readBool, false);
  l.isSolo = optional(o, "so", readBool, false);
  l.usesSourceAudio = optional(o, "usa", readBool, true);
  l.fadeIn = optional(o, "fi", readTime, OVTime::zero);
  l.fadeOut = optional(o, "fo", readTime, OVTime::zero);
  l.blendMode = optional(o, "bm", rawReader<OVBlendMode>(), OVBlendMode::normal);
  l.transform = optional(o, "tf", readTransform, LayerTransform());
  l.crop = optional(o, "cr", readCrop, LayerCrop::zero);
  l.masks = shared(optional(o, "msk", listOf(readMask), std::vector<LayerMask>{}));
  l.effects = shared(optional(o, "fx", listOf(readEffect), std::vector<EffectInstance>{}));
  l.audio = optional(o, "au", readAudio, AudioProperties());
  l.parentLayerID = optionalUuid(o, "pid");
  l.labelColor = optional(o, "lc", rawReader<LayerLabelColor>(), LayerLabelColor::none);
  l.markers = shared(optional(o, "mk", listOf(readMarker), std::vector<Marker>{}));
  l.isExpandedInTimeline = optional(o, "exp", readBool, false);
  l.trackID = optionalUuid(o, "trk");
  l.textReveal = optional(o, "trv", readProperty, AnimatedProperty::double_(100));
  l.crossfadeIn = optional(o, "xfi", readBool, false);
  l.crossfadeOut = optional(o, "xfo", readBool, false);
  return l;
}

SequenceTrack readTrack(const json& j, const Where& w) {
  const Object o(j, w);
  SequenceTrack t;
  t.id = required(o, "id", readUuid);
  t.name = optional(o, "n", readString, std::string("Track"));
  t.isMuted = optional(o, "m", readBool, false);
  t.isLocked = optional(o, "l", readBool, false);
  return t;
}

Composition readComposition(const json& j, const Where& w) {
  const Object o(j, w);
  Composition c;
  c.id = required(o, "id", readUuid);
  c.name = required(o, "n", readString);
  c.size = required(o, "sz", readSize);
  c.frameRate = required(o, "fr", readFrameRate);
  c.duration = required(o, "d", readTime);
  c.backgroundColor = optional(o, "bg", readColor, OVColor::black);
  c.isTransparent = optional(o, "tr", readBool, false);
  c.audioSampleRate = optional(o, "sr", readDouble, 48000.0);
  c.layers = PersistentList<Layer>(optional(o, "l", listOf(readLayer), std::vector<Layer>{}));
  c.markers = shared(optional(o, "mk", listOf(readMarker), std::vector<Marker>{}));
  c.workArea = optional(o, "wa", [](const json& r, const Where& rw) {
    return std::optional<OVTimeRange>(readRange(r, rw));
  }, std::optional<OVTimeRange>());
  c.playheadTime = optional(o, "ph", readTime, OVTime::zero);
  c.motionBlurEnabled = optional(o, "mb", readBool, false);
  c.motionBlurShutterAngle = optional(o, "msa", readDouble, 180.0);
  c.editingMode = optional(o, "mode", rawReader<EditingMode>(), EditingMode::layers);
  c.tracks = shared(optional(o, "tracks", listOf(readTrack), std::vector<SequenceTrack>{}));
  c.overlapsCrossfade = optional(o, "xf", readBool, true);
  // The order of a sequence's clips in a file is not trusted.
  c.normalizeSequenceOrder();
  return c;
}

std::optional<FrameRate> optionalFrameRate(const Object& o, std::string_view key) {
  return optional(o, key, [](const json& j, const Where& w) {
    return std::optional<FrameRate>(readFrameRate(j, w));
  }, std::optional<FrameRate>());
}

MediaAsset readAsset(const json& j, const Where& w) {
  const Object o(j, w);
  MediaAsset a;
  a.id = required(o, "id", readUuid);
  a.name = required(o, "name", readString);
  a.kind = required(o, "kind", rawReader<MediaKind>());
  a.path = required(o, "path", readString);
  a.bookmark = optional(o, "bookmark", [](const json& b, const Where& bw) {
    return std::optional<Bytes>(readBytes(b, bw));
  }, std::optional<Bytes>());
  a.duration = required(o, "duration", readTime);
  a.naturalSize = required(o, "naturalSize", readSize);
  a.frameRate = optionalFrameRate(o, "frameRate");
  a.hasVideoTrack = required(o, "hasVideoTrack", readBool);
  a.hasAudioTrack = required(o, "hasAudioTrack", readBool);
  a.audioChannelCount = required(o, "audioChannelCount", readInt);
  a.audioSampleRate = required(o, "audioSampleRate", readDouble);
  a.fileSizeBytes = required(o, "fileSizeBytes", readInt);
  a.dateAdded = required(o, "dateAdded", readDate);
  a.folderID = optionalUuid(o, "folderID");
  return a;
}

MediaFolder readMediaFolder(const json& j, const Where& w) {
  const Object o(j, w);
  MediaFolder f;
  f.id = required(o, "id", readUuid);
  f.name = required(o, "n", readString);
  f.dateCreated = required(o, "c", readDate);
  f.parentFolderID = optionalUuid(o, "p");
  return f;
}

BrowseFolder readBrowseFolder(const json& j, const Where& w) {
  const Object o(j, w);
  BrowseFolder f;
  f.id = required(o, "id", readUuid);
  f.name = required(o, "n", readString);
  f.path = required(o, "p", readString);
  f.bookmark = optional(o, "bm", [](const json& b, const Where& bw) {
    return std::optional<Bytes>(readBytes(b, bw));
  }, std::optional<Bytes>());
  return f;
}

OVProject readProject(const json& j, const Where& w) {
  const Object o(j, w);
  const Timestamp now = nowTimestamp();
  OVProject p;
  p.formatVersion = optional(o, "fv", readInt, std::int64_t{1});
  p.appVersion = optional(o, "av", readString, std::string("unknown"));
  p.id = optional(o, "id", readUuid, Uuid::make());
  p.name = optional(o, "n", readString, std::string("Untitled"));
  p.compositions = PersistentList<Composition>(
      optional(o, "comps", listOf(readComposition), std::vector<Composition>{}));
  p.assets = shared(optional(o, "assets", listOf(readAsset), std::vector<MediaAsset>{}));
  p.mediaFolders = shared(optional(o, "mfolders", listOf(readMediaFolder), std::vector<MediaFolder>{}));
  p.browseFolders = shared(optional(o, "bfolders", listOf(readBrowseFolder), std::vector<BrowseFolder>{}));
  p.activeCompositionID = optionalUuid(o, "active");
  p.createdAt = optional(o, "created", readDate, now);
  p.modifiedAt = optional(o, "modified", readDate, now);
  return p;
}

nlohmann::json parse(std::string_view data) {
  try {
    return nlohmann::json::parse(data);
  } catch (const nlohmann::json::exception& e) {
    std::string what = e.what();
    if (const auto at = what.find("] "); at != std::string::npos) what.erase(0, at + 2);
    throw ProjectCodecError::corruptData("It is not valid JSON (" + what + ").");
  }
}

// The first pass: only the format version, before trusting anything else.
std::int64_t probeFormatVersion(const nlohmann::json& j) {
  const Where top;
  const Object o(j, top);
  return optional(o, "fv", readInt, std::int64_t{1});
}

}  // namespace

core::Layer decodeLayer(const json& j, const Where& where) { return readLayer(j, where); }
core::MediaAsset decodeMediaAsset(const json& j, const Where& where) { return readAsset(j, where); }
core::Keyframe decodeKeyframe(const json& j, const Where& where) { return readKeyframe(j, where); }
core::OVTime decodeTime(const json& j, const Where& where) { return readTime(j, where); }

OVProject decodeProjectJson(std::string_view data) {
  const nlohmann::json j = parse(data);
  const std::int64_t version = probeFormatVersion(j);
  if (version > OVProject::currentFormatVersion) throw ProjectCodecError::unsupportedFormatVersion(version);
  return readProject(j, Where{});
}

}  // namespace orvane::document
