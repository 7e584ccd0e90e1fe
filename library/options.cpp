// SPDX-License-Identifier: MIT
#include "options.h"

#include <cmath>

#include "text.h"

bool FlagGiven(std::int32_t flag, const char* name) {
  if (flag != 0 && flag != 1) Refuse(std::string(name) + " is neither 0 nor 1");
  return flag == 1;
}

std::string ConfigGiven(const char* folder) {
  return folder == nullptr ? "config" : TextGiven(folder, "config");
}

PcdOptions CloudOptionsGiven(const trelvane_cloud_options* given) {
  PcdOptions options;
  if (given == nullptr) return options;
  const trelvane_cloud_options& cloud = Sized(given, "cloud");
  options.width = cloud.width;
  options.height = cloud.height;
  options.swapXZ = FlagGiven(cloud.swap_xz, "swap_xz");
  if (FlagGiven(cloud.has_invalid_point, "has_invalid_point")) {
    const auto& [x, y, z] = cloud.invalid_point;
    options.invalidPoint = {x, y, z};
  }
  if (cloud.zoom != 0) {
    if (!std::isfinite(cloud.zoom) || cloud.zoom < 0) Refuse("zoom is no number above 0");
    options.zoom = cloud.zoom;
  }
  return options;
}

Listener ListenerOf(trelvane_message_function function, void* context) {
  if (function == nullptr) return {};
  return [=](NoticeKind kind, const std::string& text) {
    function(context, kind == NoticeKind::info ? TRELVANE_MESSAGE_INFO : TRELVANE_MESSAGE_WARNING,
             ToUtf8(text).c_str());
  };
}
