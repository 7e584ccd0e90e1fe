// SPDX-License-Identifier: MIT
#include "surfacefileconverter/boundeddocument.h"

#include <string>

#include "sdk/object.h"
#include "surfacefileconverter/failure.h"

using nlohmann::json;

namespace {

constexpr zSize kMostBytes = zSize{16} << 20;
constexpr zSize kMostValues = zSize{1} << 20;
constexpr zSize kMostDepth = 100;

[[noreturn]] void Fail(int line, const char* function, const char* message) {
  throw Orv::Exception(line, kSourceFile, kBadInput, function, message);
}

// Reads through a document without keeping anything of it.
class BoundsCheck final : public nlohmann::json_sax<json> {
 public:
  explicit BoundsCheck(const char* function) : function_(function) {}

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
    if (++values_ > kMostValues)
      Fail(__LINE__, function_, "The scanner configuration is too large");
    return true;
  }
  bool Enter() {
    if (++depth_ > kMostDepth) {
      Fail(__LINE__, function_, "The scanner configuration is nested too deeply");
    }
    return Count();
  }
  bool Leave() {
    --depth_;
    return true;
  }

  const char* function_;
  zSize values_ = 0;
  zSize depth_ = 0;
};

}  // namespace

json ParseBounded(const zBytes& document, const char* function) {
  if (document.size() > kMostBytes) {
    Fail(__LINE__, function, "The scanner configuration is too large");
  }
  BoundsCheck check(function);
  json::sax_parse(document.begin(), document.end(), &check);
  return json::parse(document.begin(), document.end());
}
