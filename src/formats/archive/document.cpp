// SPDX-License-Identifier: MIT
#include "formats/archive/document.h"

#include "filesource.h"
#include "statuses.h"

using nlohmann::json;

namespace {

constexpr zSize kMostBytes = zSize{1} << 20;
constexpr zSize kMostValues = zSize{1} << 16;
constexpr int kMostDepth = 100;

constexpr const char* kTooLarge = "The scanner configuration is too large";

}  // namespace

json ParseBounded(const zSource& document, const Orv::Operation& operation) {
  if (document.Size() > kMostBytes) operation.Fail(kBadInput, kTooLarge);
  zSize values = 0;
  const auto check = [&](int depth, json::parse_event_t event, const json& /*parsed*/) {
    using Event = json::parse_event_t;
    if ((event == Event::object_start || event == Event::array_start) && depth >= kMostDepth) {
      operation.Fail(kBadInput, "The scanner configuration is nested too deeply");
    }
    if (event == Event::object_end || event == Event::array_end) return true;
    if (++values > kMostValues) operation.Fail(kBadInput, kTooLarge);
    return true;
  };
  const zBytes text = ReadAll(document);
  return json::parse(text.begin(), text.end(), check);
}
