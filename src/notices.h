// SPDX-License-Identifier: MIT
// What an operation says beside its result, to whoever started it.
#pragma once

#include <functional>
#include <string>

#include "sdk/object.h"

enum class NoticeKind { info, warning };

// Takes each notice as it comes; may be empty. The text has no full stop at its end.
using Listener = std::function<void(NoticeKind kind, const std::string& text)>;

// Formats a notice for a listener, if there is one.
template <class... Values>
void Tell(const Listener& listener, NoticeKind kind, std::string_view format,
          const Values&... values) {
  if (listener) listener(kind, Orv::Format(format, values...));
}
