// SPDX-License-Identifier: MIT
#include "batch/progress.h"

#include <utility>

#include "sdk/object.h"

namespace {

using std::chrono::duration;

constexpr std::chrono::milliseconds kOnTerminal{100};
constexpr std::chrono::minutes kElsewhere{1};

// "0:07", "12:30" or "3:00:00".
std::string TimeText(double seconds) {
  const auto all = static_cast<z64u>(seconds);
  const z64u minutes = all / 60;
  return minutes < 60 ? Orv::Format("%llu:%02llu", minutes, all % 60)
                      : Orv::Format("%llu:%02llu:%02llu", minutes / 60, minutes % 60, all % 60);
}

double Megabytes(z64u bytes) { return static_cast<double>(bytes) / 1e6; }

}  // namespace

BatchProgress::BatchProgress(const Amount& all, bool terminal, Clock::time_point start)
    : all_(all),
      terminal_(terminal),
      start_(start),
      next_(start + (terminal ? Clock::duration(kOnTerminal) : Clock::duration(kElsewhere))) {}

std::string BatchProgress::Done(z64u bytes, bool failed, Clock::time_point now) {
  ++done_.files;
  done_.bytes += bytes;
  if (failed) ++failures_;
  return Tick(now);
}

std::string BatchProgress::Tick(Clock::time_point now) {
  if (now < next_) return {};
  next_ = now + (terminal_ ? Clock::duration(kOnTerminal) : Clock::duration(kElsewhere));
  visible_ = terminal_;
  return terminal_ ? "\r" + Line(now) + "\x1b[K" : Line(now) + "\n";
}

std::string BatchProgress::Clear() { return std::exchange(visible_, false) ? "\r\x1b[K" : ""; }

std::string BatchProgress::Line(Clock::time_point now) const {
  const double seconds = duration<double>(now - start_).count();
  const double rate = Megabytes(done_.bytes) / seconds;
  std::string line = Orv::Format("%llu of %llu files, %.0f of %.0f MB, %.0f MB/s", done_.files,
                                 all_.files, Megabytes(done_.bytes), Megabytes(all_.bytes), rate);
  if (done_.bytes > 0)
    line += ", " + TimeText(Megabytes(all_.bytes - done_.bytes) / rate) + " left";
  if (failures_ > 0) line += Orv::Format(", %llu failed", failures_);
  return line;
}
