// SPDX-License-Identifier: MIT
// Which input becomes which output.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "batch/inputs.h"
#include "batch/options.h"

struct Task {
  Input input;
  NameParts parts;     // of the output's name, but for frame and source
  std::string output;  // path; where frames or sources have files of their own, theirs are like it
};

// Two inputs of one batch that cannot be converted together.
class BadPlan : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

bool IsRecording(std::optional<FileType> type);

// A path as it is compared with others, whatever it is named relative to.
std::string NormalPath(const std::string& path);

// A task for each input; one whose kind does not become what is wished has a refusal. Throws
// BadPlan where two inputs would become one output, or one would replace another one, as far as
// names tell without a look into recordings.
std::vector<Task> MakePlan(std::vector<Input> inputs, const BatchOptions& options);

// The path of an output. Throws BadName.
std::string OutputPath(const BatchOptions& options, const NameParts& parts);

// One of the parts of a plan: all parts together are the plan, no two have anything in common, and
// they have as many bytes as can be. The same for the same plan, whatever its order is.
std::vector<Task> TakeShard(std::vector<Task> plan, const Shard& shard);
