// SPDX-License-Identifier: MIT
// Entry of trelvane-inspect, which tells what files hold and changes none of them.
#include "inspection/options.h"

int main(int argc, char** argv) {
  const ParsedOptions parsed = ParseInspectOptions(argc, argv);
  if (parsed.exitCode) return *parsed.exitCode;
  return 0;
}
