// SPDX-License-Identifier: MIT
#include "batch/plan.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <unordered_map>

#include "surfacefileconverter/scanexport.h"

namespace fs = std::filesystem;

namespace {

constexpr struct {
  FileType type;
  const char* extension;
} kTargets[] = {{SUR, ".sur"}, {SRF, ".srf"}, {PCD, ".pcd"},    {PRO, ".pro"},
                {CSV, ".csv"}, {REP, ".rep"}, {OVREC, ".ovrec"}};

// What a recording holds is known only later.
bool Becomes(std::optional<FileType> from, FileType to) {
  if (IsRecording(from)) return to < CSV || (to == CSV && from == OVREC);
  return to == REP || to == OVREC || (from && BecomesScan(*from, to));
}

const char* KindOf(std::optional<FileType> type) {
  if (!type) return "A folder that is one recording";
  switch (*type) {
    case SUR:
      return "A .sur surface";
    case SRF:
      return "A .srf surface";
    case PRO:
      return "A profile";
    case PCD:
      return "A point cloud";
    default:
      return type == OVREC ? "An archive" : "A recording";
  }
}

std::string RefusalOf(std::optional<FileType> from, FileType to) {
  if (Becomes(from, to)) return {};
  std::vector<std::string> possible;
  for (const auto& target : kTargets) {
    if (Becomes(from, target.type)) possible.emplace_back(target.extension);
  }
  std::string text = std::string(KindOf(from)) + " becomes " + possible.front();
  for (zSize i = 1; i < possible.size(); ++i) {
    text += (i + 1 < possible.size() ? ", " : " and ") + possible[i];
  }
  return text + " only";
}

NameParts PartsOf(const Input& input, const BatchOptions& options) {
  fs::path below = input.below;
  // The folder in which the program runs, as one recording.
  if (below.empty()) below = fs::weakly_canonical(input.path).filename();
  const fs::path stem = input.type ? below.stem() : below.filename();
  NameParts parts{below.parent_path().string(), stem.string(), FrameText(0), kScanSourceName};
  // A scan file is the one frame of the one source of its recording; what there are in others is
  // known when they are read.
  if (IsRecording(input.type)) {
    parts.frame = options.conversion.allFrames ? "{frame}" : FrameText(options.conversion.frame);
    parts.source = "{source}";
  }
  return parts;
}

void RequireSeparate(const std::vector<Task>& plan, const NameTemplate& name) {
  std::unordered_map<std::string, const Task*> inputs;
  for (const Task& task : plan) inputs[NormalPath(task.input.path)] = &task;
  std::unordered_map<std::string, const Task*> outputs;
  for (const Task& task : plan) {
    if (!task.input.refusal.empty()) continue;
    // What a recording calls its sources is known when it is read.
    if (name.Has(&NameParts::source) && IsRecording(task.input.type)) continue;
    const std::string output = NormalPath(task.output);
    const auto [other, isNew] = outputs.emplace(output, &task);
    if (!isNew) {
      throw BadPlan(task.input.path + " and " + other->second->input.path + " would both become " +
                    task.output + "; --name may tell them apart");
    }
    if (inputs.contains(output)) {
      throw BadPlan(task.input.path + " would replace " + task.output + ", which is an input");
    }
  }
}

}  // namespace

bool IsRecording(std::optional<FileType> type) { return type && *type >= REC; }

std::string NormalPath(const std::string& path) {
  return fs::absolute(path).lexically_normal().string();
}

std::string OutputPath(const BatchOptions& options, const NameParts& parts) {
  return (fs::path(options.outputFolder) / options.name.Fill(parts))
      .concat(options.conversion.extension)
      .string();
}

std::vector<Task> MakePlan(std::vector<Input> inputs, const BatchOptions& options) {
  std::vector<Task> plan;
  plan.reserve(inputs.size());
  for (Input& input : inputs) {
    Task task{std::move(input), {}, {}};
    Input& own = task.input;
    if (own.refusal.empty()) own.refusal = RefusalOf(own.type, options.conversion.to);
    task.parts = PartsOf(own, options);
    try {
      task.output = OutputPath(options, task.parts);
    } catch (const BadName& name) {
      if (own.refusal.empty()) own.refusal = name.what();
    }
    plan.push_back(std::move(task));
  }
  RequireSeparate(plan, options.name);
  return plan;
}

std::vector<Task> TakeShard(std::vector<Task> plan, const Shard& shard) {
  if (shard.count == 1) return plan;
  // The largest goes first, each to the part that has the least.
  std::vector<zSize> order(plan.size());
  std::iota(order.begin(), order.end(), zSize{0});
  std::ranges::sort(order, [&](zSize a, zSize b) {
    const Input& one = plan[a].input;
    const Input& other = plan[b].input;
    return one.state.bytes != other.state.bytes ? one.state.bytes > other.state.bytes
                                                : one.path < other.path;
  });
  std::multimap<z64u, z32u> parts;  // by their bytes
  for (z32u part = 1; part <= shard.count; ++part) parts.emplace_hint(parts.end(), 0, part);
  std::vector<bool> taken(plan.size());
  for (const zSize i : order) {
    auto least = parts.extract(parts.begin());
    taken[i] = least.mapped() == shard.number;
    least.key() += plan[i].input.state.bytes + 1;  // empty files are spread, too
    parts.insert(std::move(least));
  }
  std::vector<Task> own;
  for (zSize i = 0; i < plan.size(); ++i) {
    if (taken[i]) own.push_back(std::move(plan[i]));
  }
  return own;
}
