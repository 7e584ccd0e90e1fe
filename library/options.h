// SPDX-License-Identifier: MIT
// What callers of the library wish, checked.
#pragma once

#include <type_traits>

#include "failure.h"
#include "formats/pcd/reader.h"
#include "notices.h"

// Checks the size of a struct. There is but one version of each so far.
template <class Struct>
Struct& Sized(Struct* given, const char* name) {
  if (Given(given, name).size != sizeof(Struct)) {
    Refuse(std::string("the size of ") + name + " is not that of its struct");
  }
  return *given;
}

// Options as they were given; all defaults for NULL.
template <class Struct>
Struct OptionsGiven(const Struct* given) {
  return given == nullptr ? Struct{} : Sized(given, "options");
}

// A field that is 0 or 1.
bool FlagGiven(std::int32_t flag, const char* name);

// The folder that an archive's configuration comes from.
std::string ConfigGiven(const char* folder);

PcdOptions CloudOptionsGiven(const trelvane_cloud_options* given);

// Gives what is told to the caller's function.
Listener ListenerOf(trelvane_message_function function, void* context);
