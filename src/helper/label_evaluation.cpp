#include "helper/label_evaluation.h"

#include <fmt/format.h>

#include "helper/tool_output.h"

namespace corvane {
namespace {

constexpr const char* kSystemPath = "/usr/bin:/bin:/usr/sbin:/sbin";

// $1 functions, $2 fragment, $3 label, $4 marker. INSTALL=force keeps labels from running a vendor's own update
// tool, DEBUG=1 from touching the machine. The stand-ins replace what would log, install or end the tool, and,
// where the machine lacks them, the Mac's own programs. Nothing here makes zsh read whole folders of PATH into its
// tables, which would cost more than zsh's own start. Arguments reach `eval` only as the text of the fragment.
constexpr const char* kWrapper = R"zsh(
unsetopt hash_dirs hash_cmds
LOGGING=ERROR DEBUG=1 INSTALL=force NOTIFY=silent BLOCKING_PROCESS_ACTION=ignore
typeset -A levels; levels=(DEBUG 0 INFO 1 WARN 2 ERROR 3 REQ 4)
currentUser=${USERNAME:-root} label=$3
corvaneFragment=$2 corvaneMarker=$4
[[ -r $1 ]] && source "$1"
printlog() { print -ru2 -- "$1" }
cleanupAndExit() { print -ru2 -- "$2"; exit "${1:-1}" }
displaynotification() { : }
displaydialog() { : }
runAsUser() { "$@" }
if [[ ! -x /usr/bin/osascript ]]; then
  getJSONValue() { print -r -- "$1" | jq -r ".$2 // empty" 2>/dev/null }
fi
if [[ ! -x /usr/bin/xpath ]]; then
  xpath() { xmllint --xpath "$1" "${2:--}" 2>/dev/null }
fi
arch() { case $(uname -m) in (arm64|aarch64) print arm64;; (*) print i386;; esac }
set --
eval "case \$label in
$corvaneFragment
esac"
print -r -- ""
print -r -- "$corvaneMarker$appNewVersion"
)zsh";

std::optional<std::string_view> markedText(std::string_view output, std::string_view marker) {
  const auto found = output.rfind(marker);
  if (found == std::string_view::npos || (found != 0 && output[found - 1] != '\n')) return std::nullopt;
  const auto text = output.substr(found + marker.size());
  return text.ends_with('\n') ? text.substr(0, text.size() - 1) : text;
}

}  // namespace

VersionAnswer versionFailure(std::string_view reason) { return {.failureReason = std::string(reason)}; }

ChildEnvironment toolEnvironment(const std::filesystem::path& home) {
  return {{"PATH", kSystemPath}, {"HOME", home.string()}, {"LANG", "C.UTF-8"}};
}

ChildEnvironment lookerEnvironment(const std::filesystem::path& scratchHome) {
  // zsh itself has a prefix of its own for what it sets down in files.
  return {{"PATH", std::string(kSystemPath) + ":/usr/local/bin"},
          {"HOME", scratchHome.string()},
          {"LANG", "C.UTF-8"},
          {"TMPDIR", scratchHome.string()},
          {"TMPPREFIX", (scratchHome / "zsh").string()}};
}

bool isNeverEvaluated(const Label& label) { return label.text == "adobereaderdc"; }

ChildSpec evaluationChild(const EvaluationSetting& setting, const Label& label, std::string fragment,
                          const std::string& marker) {
  return {.executable = setting.zsh,
          .arguments = {"-f", "-c", kWrapper, "corvane", setting.functions.string(), std::move(fragment), label.text,
                        marker},
          .environment = lookerEnvironment(setting.home),
          .folder = setting.home.string(),
          .runAs = setting.runAs,
          .timeLimit = kLabelTimeLimit,
          .outputLimit = 256U << 10U,
          .endsGroup = true,
          .bounds = kLabelBounds};
}

VersionAnswer readEvaluation(const Result<ChildExit>& exit, std::string_view marker) {
  if (!exit) return versionFailure(fmt::format("The label could not be evaluated: {}", exit.error().text));
  if (exit->timedOut) return versionFailure("The vendor's page did not answer within 20 seconds");
  const auto text = markedText(exit->output, marker);
  if (!text) return versionFailure(fmt::format("The label ended with code {} before it named a version", exit->code));
  if (text->empty()) return {.failureReason = "The vendor's page gave no version", .notInMetadata = true};
  if (!isBelievableVersion(*text))
    return versionFailure("The vendor's page answered with something that is no version");
  return {.version = std::string(*text)};
}

}  // namespace corvane
