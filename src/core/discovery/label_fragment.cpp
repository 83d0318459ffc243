#include "core/discovery/label_fragment.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/utf8.h"
#include "core/discovery/shell_words.h"

namespace corvane {
namespace {

constexpr const char* kDomain = "CRVLabels";

std::unexpected<Error> damaged(std::string reason) { return failure(kDomain, 1, std::move(reason)); }

bool isLabelLetter(char letter) {
  return (letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9') || letter == '_' || letter == '-';
}

// Blanks, line breaks and continued lines between the patterns of a head.
constexpr std::string_view kHeadBlanks = " \t\r\n\\";

std::string_view withoutHeadBlanks(std::string_view text) {
  const auto first = text.find_first_not_of(kHeadBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kHeadBlanks) - first + 1);
}

// Skips blank lines and comments in front of the head.
std::size_t headStart(std::string_view text) {
  std::size_t at = 0;
  while ((at = text.find_first_not_of(" \t\r\n", at)) != std::string_view::npos && text[at] == '#') {
    at = text.find('\n', at);
    if (at == std::string_view::npos) break;
  }
  return std::min(at, text.size());
}

// Patterns with wildcards or capitals name no label that the tool could be called with; they are passed over.
Labels patternsOf(std::string_view head) {
  Labels labels;
  while (true) {
    const auto bar = head.find('|');
    const auto pattern = withoutHeadBlanks(head.substr(0, bar));
    const bool usable = !pattern.empty() && std::ranges::all_of(pattern, isLabelLetter);
    if (usable && std::ranges::find(labels, pattern, &Label::text) == labels.end())
      labels.emplace_back(std::string(pattern));
    if (bar == std::string_view::npos) return labels;
    head.remove_prefix(bar + 1);
  }
}

struct VariableName {
  std::string_view text;
  LabelVariable variable;
  std::optional<std::string> LabelFragment::*field;  // null for the list
};

constexpr auto kVariables = std::to_array<VariableName>({
    {"name", LabelVariable::name, &LabelFragment::name},
    {"type", LabelVariable::type, &LabelFragment::type},
    {"appName", LabelVariable::appName, &LabelFragment::appName},
    {"packageID", LabelVariable::packageID, &LabelFragment::packageID},
    {"expectedTeamID", LabelVariable::expectedTeamID, &LabelFragment::expectedTeamID},
    {"versionKey", LabelVariable::versionKey, &LabelFragment::versionKey},
    {"blockingProcesses", LabelVariable::blockingProcesses, nullptr},
    {"targetDir", LabelVariable::targetDir, &LabelFragment::targetDir},
    {"folderName", LabelVariable::folderName, &LabelFragment::folderName},
    {"updateTool", LabelVariable::updateTool, &LabelFragment::updateTool},
    {"appNewVersion", LabelVariable::appNewVersion, &LabelFragment::appNewVersion},
});

const VariableName* variableNamed(std::string_view name) {
  const auto found = std::ranges::find(kVariables, name, &VariableName::text);
  return found == kVariables.end() ? nullptr : &*found;
}

unsigned bitOf(LabelVariable variable) { return 1U << static_cast<unsigned>(variable); }

void take(LabelFragment& fragment, const ShellAssignment& assignment) {
  const auto* variable = variableNamed(assignment.name);
  if (variable == nullptr) return;
  if (!assignment.literal) {
    fragment.computed |= bitOf(variable->variable);
    return;
  }
  if (variable->field != nullptr) {
    auto& field = fragment.*variable->field;
    if (assignment.isArray) return;
    if (!field)
      field = assignment.words.front();
    else if (*field != assignment.words.front() && variable->variable == LabelVariable::appNewVersion)
      fragment.computed |= bitOf(variable->variable);
  } else if (!fragment.blockingProcesses) {
    fragment.blockingProcesses = assignment.words;
  }
}

// A variable that has a literal counts as known, whatever its other branches compute. The version is the exception:
// a literal is often just what a loop begins with, and a wrong one would have the wrong version installed towards.
void settleComputed(LabelFragment& fragment) {
  if (fragment.isComputed(LabelVariable::appNewVersion)) fragment.appNewVersion.reset();
  for (const auto& variable : kVariables) {
    const bool known =
        variable.field != nullptr ? (fragment.*variable.field).has_value() : fragment.blockingProcesses.has_value();
    if (known) fragment.computed &= ~bitOf(variable.variable);
  }
}

bool isPackageType(std::string_view type) { return type.starts_with("pkg"); }

}  // namespace

std::optional<std::string> LabelFragment::bundlePath() const {
  if (appName) return appName->empty() ? std::nullopt : appName;
  if (isComputed(LabelVariable::appName) || !name || name->empty()) return std::nullopt;
  return *name + ".app";
}

std::string_view LabelFragment::installedVersionKey() const {
  return versionKey && !versionKey->empty() ? std::string_view(*versionKey) : "CFBundleShortVersionString";
}

std::string LabelFragment::installFolder() const {
  if (targetDir && !targetDir->empty()) return *targetDir;
  return type && isPackageType(*type) ? "/" : "/Applications";
}

std::vector<std::string> LabelFragment::blockingProcessNames() const {
  if (blockingProcesses) {
    const bool none = blockingProcesses->empty() || blockingProcesses->front() == "NONE";
    return none ? std::vector<std::string>{} : *blockingProcesses;
  }
  if (isComputed(LabelVariable::blockingProcesses) || !name) return {};
  return {*name};
}

Result<LabelFragment> parseLabelFragment(std::string_view fileName, std::string_view text) {
  if (text.size() > kLabelFragmentLimit) return damaged("it is too large for a label");
  if (text.find('\0') != std::string_view::npos) return damaged("it holds a NUL byte");
  if (!isUtf8(text)) return damaged("it is no UTF-8");
  text.remove_prefix(headStart(text));
  if (text.starts_with('(')) text.remove_prefix(1);
  const auto headEnd = text.find(')');
  if (headEnd == std::string_view::npos) return damaged("its head is never closed");

  LabelFragment fragment;
  fragment.fileName = fileName;
  fragment.labels = patternsOf(text.substr(0, headEnd));
  if (fragment.labels.empty()) return damaged("its head names no label");
  text.remove_prefix(headEnd + 1);
  const auto bodyEnd = text.rfind(";;");
  if (bodyEnd == std::string_view::npos) return damaged("it has no closing \";;\"");

  ShellWords words(text.substr(0, bodyEnd));
  while (const auto* assignment = words.next()) take(fragment, *assignment);
  if (!words.problem().empty()) return damaged(std::string(words.problem()));
  fragment.declaresCustomVersion = words.declaresFunction("appCustomVersion");
  settleComputed(fragment);
  if (!fragment.name && !fragment.isComputed(LabelVariable::name)) return damaged("it sets no name");
  return fragment;
}

}  // namespace corvane
