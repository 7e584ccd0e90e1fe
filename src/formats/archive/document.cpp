// SPDX-License-Identifier: MIT
#include "formats/archive/document.h"

#include "statuses.h"

using nlohmann::json;

namespace {

constexpr zSize kMostBytes = zSize{1} << 20;
constexpr zSize kMostValues = zSize{1} << 16;
constexpr zSize kMostDepth = 100;

constexpr const char* kTooLarge = "The scanner configuration is too large";

// Reads through a document without keeping anything of it.
class BoundsCheck final : public nlohmann::json_sax<json> {
 public:
  explicit BoundsCheck(const Orv::Operation& operation) : operation_(operation) {}

  bool null() override { return Count(); }
  bool boolean(bool /*value*/) override { return Count(); }
  bool number_integer(number_integer_t /*value*/) override { return Count(); }
  bool number_unsigned(number_unsigned_t /*value*/) override { return Count(); }
  bool number_float(number_float_t /*value*/, const string_t& /*text*/) override { return Count(); }
  bool string(string_t& /*value*/) override { return Count(); }
  bool binary(binary_t& /*value*/) override { return Count(); }
  bool key(string_t& /*name*/) override { return Count(); }
  bool start_object(std::size_t /*elements*/) override { return Enter(); }
  bool start_array(std::size_t /*elements*/) override { return Enter(); }
  bool end_object() override { return Leave(); }
  bool end_array() override { return Leave(); }
  // Left to the parser that keeps the document.
  bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                   const json::exception& /*error*/) override {
    return false;
  }

 private:
  bool Count() {
    if (++values_ > kMostValues) operation_.Fail(kBadInput, kTooLarge);
    return true;
  }
  bool Enter() {
    if (++depth_ > kMostDepth) {
      operation_.Fail(kBadInput, "The scanner configuration is nested too deeply");
    }
    return Count();
  }
  bool Leave() {
    --depth_;
    return true;
  }

  Orv::Operation operation_;
  zSize values_ = 0;
  zSize depth_ = 0;
};

}  // namespace

json ParseBounded(std::span<const z8u> document, const Orv::Operation& operation) {
  if (document.size() > kMostBytes) operation.Fail(kBadInput, kTooLarge);
  BoundsCheck check(operation);
  json::sax_parse(document.begin(), document.end(), &check);
  return json::parse(document.begin(), document.end());
}
