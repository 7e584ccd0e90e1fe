// SPDX-License-Identifier: MIT
#include <chrono>

#include "sdk/object.h"

namespace Orv {

namespace {

// Years, months, ... of the UTC calendar, as in 2026-11-21T04:20:00Z.
std::string UtcTime() {
  using namespace std::chrono;
  const auto now = time_point_cast<seconds>(system_clock::now());
  const auto day = floor<days>(now);
  const year_month_day date(day);
  const hh_mm_ss<seconds> time(now - day);
  return Format("%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                time.hours().count(), time.minutes().count(), time.seconds().count());
}

// Control characters as \xHH, so that a report stays one line.
std::string OneLine(std::string_view text) {
  std::string line;
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    line += code < 0x20 || code == 0x7F ? Format("\\x%02X", code) : std::string(1, c);
  }
  return line;
}

}  // namespace

std::string Exception::to_string(z64u /*options*/) const {
  return UtcTime() +
         Format(" status %d in %s (%s:%d): ", details_->status, details_->function, details_->file,
                details_->line) +
         OneLine(details_->message);
}

}  // namespace Orv
