#pragma once
// Single records in their project-file JSON form, for other formats that
// embed them (the clipboard's payloads): a layer, a media asset, a keyframe
// and a time encode exactly as inside a project file, and decode with the
// same defaults and checks. Decoders throw ProjectCodecError (corruptData)
// with the place of the problem under where; callers catch it. Kept apart
// from <expected> like project_json.hpp. Stateless; any thread.

#include <nlohmann/json.hpp>

#include "core/keyframe.hpp"
#include "core/layer.hpp"
#include "core/media_asset.hpp"
#include "core/ov_time.hpp"
#include "document/json_reading.hpp"
#include "document/project_codec_error.hpp"

namespace orvane::document {

nlohmann::json encodeLayer(const core::Layer& layer);
nlohmann::json encodeMediaAsset(const core::MediaAsset& asset);
nlohmann::json encodeKeyframe(const core::Keyframe& keyframe);
nlohmann::json encodeTime(const core::OVTime& time);

// where names the value's place for the error text ("layers[2]").
core::Layer decodeLayer(const nlohmann::json& j, const json_reading::Where& where = {});
core::MediaAsset decodeMediaAsset(const nlohmann::json& j, const json_reading::Where& where = {});
core::Keyframe decodeKeyframe(const nlohmann::json& j, const json_reading::Where& where = {});
core::OVTime decodeTime(const nlohmann::json& j, const json_reading::Where& where = {});

}  // namespace orvane::document
