// Writing the project as JSON. Every record becomes an object with the short
// keys of the file format; absent optionals are left out, never null.
// nlohmann's objects keep their keys sorted, which the file relies on.

#include <cmath>

#include <nlohmann/json.hpp>

#include "core/base64.hpp"
#include "core/enum_text.hpp"
#include "document/project_json.hpp"
#include "document/record_json.hpp"

namespace orvane::document {
namespace {

using nlohmann::json;
using namespace core;

// Whole numbers are written without a fraction ("1920", not "1920.0"), as
// files written elsewhere have them. A number that is not finite cannot be
// JSON; 0 keeps the file readable.
json number(double v) {
  if (!std::isfinite(v)) return 0;
  if (v == std::trunc(v) && std::fabs(v) < 9007199254740992.0) return static_cast<std::int64_t>(v);
  return v;
}

template <class E>
json raw(E value) {
  return std::string(rawValue(value));
}

json uuid(const Uuid& id) { return id.text(); }
json date(Timestamp t) { return formatISO8601(t); }

json point(const OVPoint& p) { return {{"x", number(p.x)}, {"y", number(p.y)}}; }
json size(const OVSize& s) { return {{"w", number(s.width)}, {"h", number(s.height)}}; }
json color(const OVColor& c) {
  return {{"r", number(c.red)}, {"g", number(c.green)}, {"b", number(c.blue)}, {"a", number(c.alpha)}};
}
json time(const OVTime& t) { return {{"v", t.value}, {"ts", t.timescale}}; }
json range(const OVTimeRange& r) { return {{"s", time(r.start)}, {"d", time(r.duration)}}; }
json frameRate(const FrameRate& r) { return {{"numerator", r.numerator}, {"denominator", r.denominator}}; }

template <class T, class F>
json list(const T& items, F&& write) {
  json out = json::array();
  for (const auto& item : items) out.push_back(write(item));
  return out;
}

json maskPath(const MaskPath& p) {
  return {{"c", p.closed}, {"v", list(p.vertices, [](const MaskVertex& v) {
             return json{{"p", point(v.point)}, {"i", point(v.inTangent)}, {"o", point(v.outTangent)}};
           })}};
}

json payload(const PropertyValue& v) {
  switch (v.kind()) {
    case PropertyValue::Kind::double_: return number(*v.doubleValue());
    case PropertyValue::Kind::point: return point(*v.pointValue());
    case PropertyValue::Kind::size: return size(*v.sizeValue());
    case PropertyValue::Kind::color: return color(*v.colorValue());
    case PropertyValue::Kind::bool_: return *v.boolValue();
    case PropertyValue::Kind::integer: return *v.integerValue();
    case PropertyValue::Kind::choice:
    case PropertyValue::Kind::text: return *v.stringValue();
    case PropertyValue::Kind::maskPath: return maskPath(*v.maskPathValue());
  }
  return nullptr;
}

json value(const PropertyValue& v) { return {{"t", raw(v.kind())}, {"v", payload(v)}}; }

json keyframe(const Keyframe& k) {
  json o{{"id", uuid(k.id)}, {"t", time(k.time)}, {"v", value(k.value)}, {"m", raw(k.mode)}};
  if (k.handles) o["h"] = {{"outControl", point(k.handles->outControl)}, {"inControl", point(k.handles->inControl)}};
  if (k.spatialMode != SpatialInterpolation::linear || k.spatialHandles != SpatialHandles::zero) {
    o["sm"] = raw(k.spatialMode);
    o["sh"] = {{"inTangent", point(k.spatialHandles.inTangent)},
               {"outTangent", point(k.spatialHandles.outTangent)}};
  }
  return o;
}

json property(const AnimatedProperty& p) {
  json o{{"b", value(p.baseValue)}};
  if (p.isAnimated()) o["k"] = list(p.keyframes(), keyframe);
  return o;
}

json marker(const Marker& m) {
  return {{"id", uuid(m.id)}, {"t", time(m.time)}, {"n", m.name}, {"c", color(m.color)}};
}

json text(const TextContent& t) {
  json o{{"string", t.string},
         {"fontName", t.fontName},
         {"fontSize", number(t.fontSize)},
         {"color", color(t.color)},
         {"alignment", raw(t.alignment)},
         {"lineSpacing", number(t.lineSpacing)},
         {"letterSpacing", number(t.letterSpacing)},
         {"strokeColor", color(t.strokeColor)},
         {"strokeWidth", number(t.strokeWidth)},
         {"backgroundColor", color(t.backgroundColor)},
         {"backgroundPadding", number(t.backgroundPadding)},
         {"shadowColor", color(t.shadowColor)},
         {"shadowOffset", point(t.shadowOffset)},
         {"shadowBlur", number(t.shadowBlur)},
         {"hasShadow", t.hasShadow}};
  if (t.boxSize) o["boxSize"] = size(*t.boxSize);
  return o;
}

json shape(const ShapeContent& s) {
  return {{"type", raw(s.type)},
          {"size", size(s.size)},
          {"fillColor", color(s.fillColor)},
          {"isFilled", s.isFilled},
          {"strokeColor", color(s.strokeColor)},
          {"strokeWidth", number(s.strokeWidth)},
          {"isStroked", s.isStroked},
          {"cornerRadius", number(s.cornerRadius)},
          {"sideCount", s.sideCount},
          {"innerRadiusRatio", number(s.innerRadiusRatio)}};
}

json content(const LayerContent& c) {
  json o{{"k", raw(c.kind())}};
  switch (c.kind()) {
    case LayerKind::video:
    case LayerKind::audio:
    case LayerKind::image: o["a"] = uuid(*c.assetID()); break;
    case LayerKind::text: o["tx"] = text(*c.textContent()); break;
    case LayerKind::shape: o["sh"] = shape(*c.shapeContent()); break;
    case LayerKind::solid:
      o["so"] = {{"color", color(c.solidContent()->color)}, {"size", size(c.solidContent()->size)}};
      break;
    case LayerKind::adjustment: o["sz"] = size(*c.adjustmentSize()); break;
    case LayerKind::precomposition: o["c"] = uuid(*c.compositionID()); break;
  }
  return o;
}

json transform(const LayerTransform& t) {
  return {{"p", property(t.position)}, {"s", property(t.scale)},  {"r", property(t.rotation)},
          {"a", property(t.anchorPoint)}, {"o", property(t.opacity)}, {"k", property(t.skew)},
          {"fh", t.flipHorizontally}, {"fv", t.flipVertically}};
}

json crop(const LayerCrop& c) {
  return {{"l", property(c.left)}, {"t", property(c.top)}, {"r", property(c.right)}, {"b", property(c.bottom)}};
}

json mask(const LayerMask& m) {
  return {{"id", uuid(m.id)}, {"n", m.name},          {"en", m.isEnabled},
          {"inv", m.inverted}, {"p", property(m.path)}, {"f", property(m.feather)}};
}

json effect(const EffectInstance& e) {
  json parameters = json::object();
  for (const auto& [key, p] : e.parameters) parameters[key] = property(p);
  return {{"id", uuid(e.id)}, {"e", e.effectID}, {"on", e.isEnabled}, {"p", std::move(parameters)}};
}

json audio(const AudioProperties& a) {
  return {{"v", property(a.volume)},         {"p", property(a.pan)},
          {"m", a.isMuted},                  {"ng", number(a.normalizeGain)},
          {"em", number(a.echoMix)},         {"ed", number(a.echoDelayMs)},
          {"ef", number(a.echoFeedback)},    {"rm", number(a.reverbMix)},
          {"rd", number(a.reverbDecay)},     {"ps", number(a.pitchSemitones)},
          {"pc", number(a.pitchCents)},      {"pm", raw(a.pitchMode)}};
}

json layer(const Layer& l) {
  json o{{"id", uuid(l.id)},
         {"n", l.name},
         {"c", content(l.content)},
         {"tr", range(l.timeRange)},
         {"ss", time(l.sourceStart)},
         {"en", l.isEnabled},
         {"lk", l.isLocked},
         {"so", l.isSolo},
         {"usa", l.usesSourceAudio},
         {"fi", time(l.fadeIn)},
         {"fo", time(l.fadeOut)},
         {"bm", raw(l.blendMode)},
         {"tf", transform(l.transform)},
         {"cr", crop(l.crop)},
         {"msk", list(l.masks, mask)},
         {"fx", list(l.effects, effect)},
         {"au", audio(l.audio)},
         {"lc", raw(l.labelColor)},
         {"mk", list(l.markers, marker)},
         {"exp", l.isExpandedInTimeline},
         {"trv", property(l.textReveal)},
         {"xfi", l.crossfadeIn},
         {"xfo", l.crossfadeOut}};
  if (l.parentLayerID) o["pid"] = uuid(*l.parentLayerID);
  if (l.trackID) o["trk"] = uuid(*l.trackID);
  return o;
}

json track(const SequenceTrack& t) {
  return {{"id", uuid(t.id)}, {"n", t.name}, {"m", t.isMuted}, {"l", t.isLocked}};
}

json composition(const Composition& c) {
  json o{{"id", uuid(c.id)},
         {"n", c.name},
         {"sz", size(c.size)},
         {"fr", frameRate(c.frameRate)},
         {"d", time(c.duration)},
         {"bg", color(c.backgroundColor)},
         {"tr", c.isTransparent},
         {"sr", number(c.audioSampleRate)},
         {"l", list(c.layers, layer)},
         {"mk", list(c.markers, marker)},
         {"ph", time(c.playheadTime)},
         {"mb", c.motionBlurEnabled},
         {"msa", number(c.motionBlurShutterAngle)},
         {"mode", raw(c.editingMode)},
         {"tracks", list(c.tracks, track)},
         {"xf", c.overlapsCrossfade}};
  if (c.workArea) o["wa"] = range(*c.workArea);
  return o;
}

json asset(const MediaAsset& a) {
  json o{{"id", uuid(a.id)},
         {"name", a.name},
         {"kind", raw(a.kind)},
         {"path", a.path},
         {"duration", time(a.duration)},
         {"naturalSize", size(a.naturalSize)},
         {"hasVideoTrack", a.hasVideoTrack},
         {"hasAudioTrack", a.hasAudioTrack},
         {"audioChannelCount", a.audioChannelCount},
         {"audioSampleRate", number(a.audioSampleRate)},
         {"fileSizeBytes", a.fileSizeBytes},
         {"dateAdded", date(a.dateAdded)}};
  if (a.bookmark) o["bookmark"] = base64Encode(*a.bookmark);
  if (a.frameRate) o["frameRate"] = frameRate(*a.frameRate);
  if (a.folderID) o["folderID"] = uuid(*a.folderID);
  return o;
}

json mediaFolder(const MediaFolder& f) {
  json o{{"id", uuid(f.id)}, {"n", f.name}, {"c", date(f.dateCreated)}};
  if (f.parentFolderID) o["p"] = uuid(*f.parentFolderID);
  return o;
}

json browseFolder(const BrowseFolder& f) {
  json o{{"id", uuid(f.id)}, {"n", f.name}, {"p", f.path}};
  if (f.bookmark) o["bm"] = base64Encode(*f.bookmark);
  return o;
}

json project(const OVProject& p) {
  json o{{"fv", p.formatVersion},
         {"av", p.appVersion},
         {"id", uuid(p.id)},
         {"n", p.name},
         {"comps", list(p.compositions, composition)},
         {"assets", list(p.assets, asset)},
         {"mfolders", list(p.mediaFolders, mediaFolder)},
         {"bfolders", list(p.browseFolders, browseFolder)},
         {"created", date(p.createdAt)},
         {"modified", date(p.modifiedAt)}};
  if (p.activeCompositionID) o["active"] = uuid(*p.activeCompositionID);
  return o;
}

}  // namespace

json encodeLayer(const Layer& l) { return layer(l); }
json encodeMediaAsset(const MediaAsset& a) { return asset(a); }
json encodeKeyframe(const Keyframe& k) { return keyframe(k); }
json encodeTime(const OVTime& t) { return time(t); }

std::string encodeProjectJson(const OVProject& p) {
  // Text that is not valid UTF-8 is written with replacement characters
  // rather than failing the save.
  return project(p).dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace orvane::document
