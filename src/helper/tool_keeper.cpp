#include "helper/tool_keeper.h"

#include <fmt/format.h>

#include <utility>

#include "base/atomic_file.h"
#include "helper/root_trust.h"
#include "helper/tool_archive.h"

namespace corvane {
namespace {

constexpr Duration kSyntaxTime = 60s;

std::string trimmedToken(const CorvaneConfiguration& config) {
  auto token = config.githubAPIAuthEnabled ? config.githubAPIToken : std::string();
  std::erase_if(token, [](unsigned char c) { return c <= ' ' || c >= 0x7F; });
  return token;
}

}  // namespace

struct ToolKeeper::Attempt {
  ToolSource source;
  ToolPlace place;
  std::filesystem::path download;
  ToolEdition edition;
  std::optional<ToolVersion> version;
  std::optional<ToolVersion> present;
  bool unchanged = false;
  std::string sourceBefore;
  std::string today;
  std::shared_ptr<ChildHandle> child;
};

ToolKeeper::ToolKeeper(Services services) : s_(std::move(services)), log_(s_.log, "ToolKeeper") {}

ToolKeeper::~ToolKeeper() {
  if (attempt_ && attempt_->child) attempt_->child->kill();
}

void ToolKeeper::start() {
  ToolPlace(s_.setting().constants).settle();
  looks_ = s_.main.every(
      kToolRetry, [this] { look(); }, 5s);
  s_.main.post(lifeline_.guard([this] { look(); }));
}

void ToolKeeper::stop() {
  looks_.release();
  if (attempt_ && attempt_->child) attempt_->child->kill();
}

void ToolKeeper::look() {
  if (attempt_ || !looks_.active()) return;
  const auto setting = s_.setting();
  const auto source = ToolSource::of(setting.config);
  const bool isThere = std::filesystem::exists(setting.constants.installomatorScript());
  if (source == tried_ && isThere && s_.clock.steadyNow() < next_) return;
  if (source.version != InstallomatorVersion::custom && !s_.host) return;
  tried_ = source;
  attempt_ = std::make_shared<Attempt>(Attempt{.source = source,
                                               .place = ToolPlace(setting.constants),
                                               .download = setting.constants.supportFolder() / "installomator.download",
                                               .edition = {},
                                               .today = iso8601Utc(s_.clock.now()).substr(0, 10)});
  fetch();
}

void ToolKeeper::fetch() {
  const auto setting = s_.setting();
  if (attempt_->source.version == InstallomatorVersion::custom) {
    const std::filesystem::path custom = attempt_->source.customPath;
    if (!custom.is_absolute()) return fail("InstallomatorCustomPath names no absolute path");
    const auto path = setting.constants.root / custom.lexically_normal().relative_path();
    if (auto trusted = checkTrustedPath(path, setting.constants.root, s_.ownUid); !trusted)
      return fail(trusted.error().text);
    return prepare([path, source = attempt_->source, today = attempt_->today] {
      return ToolPlace::readCustom(path, source, today);
    });
  }
  HttpRequest request{.url = fmt::format("{}/repos/Installomator/Installomator/tarball/{}", *s_.host,
                                         attempt_->source.version == InstallomatorVersion::main ? "main" : "release"),
                      .timeLimit = kToolDownloadTime,
                      .headers = {{"Accept", "application/vnd.github+json"}, {"User-Agent", "Corvane"}}};
  if (const auto token = trimmedToken(setting.config); !token.empty())
    request.headers.emplace_back("Authorization", "Bearer " + token);
  s_.http.download(std::move(request), attempt_->download, kToolDownloadLimit,
                   lifeline_.guard([this](const Result<HttpAnswer>& answer) { downloaded(answer); }));
}

void ToolKeeper::downloaded(const Result<HttpAnswer>& answer) {
  if (!answer) return fail(answer.error().text);
  if (answer->status / 100 != 2)
    return fail(fmt::format("the source host answered with {}{}", answer->status,
                            answer->status == 401 ? ", so it does not take the token" : ""));
  prepare([file = attempt_->download, source = attempt_->source, today = attempt_->today]() -> Result<ToolEdition> {
    const auto bytes = readFile(file, kToolDownloadLimit);
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
    if (!bytes) return std::unexpected(bytes.error());
    auto files = readToolArchive(*bytes, isOfEdition);
    if (!files) return std::unexpected(files.error());
    return editionFrom(std::move(*files), source, today);
  });
}

// Reads and compares off the main thread: an edition has a thousand files and more.
void ToolKeeper::prepare(std::function<Result<ToolEdition>()> read) {
  struct Prepared {
    std::shared_ptr<Attempt> attempt;
    Status status;
  };
  runThen(
      s_.work, s_.main,
      [attempt = attempt_, read = std::move(read)]() -> Prepared {
        auto edition = read();
        if (!edition) return {attempt, std::unexpected(edition.error())};
        attempt->edition = std::move(*edition);
        attempt->version = toolVersion(attempt->edition.script);
        attempt->present = attempt->place.version();
        attempt->sourceBefore = attempt->place.sourceName();
        attempt->unchanged = attempt->place.holds(attempt->edition);
        return {attempt, attempt->unchanged ? Status() : attempt->place.writeCandidate(attempt->edition)};
      },
      lifeline_.guard([this](const Prepared& prepared) {
        if (!prepared.status) return fail(prepared.status.error().text, kToolSecondLook);
        this->prepared();
      }));
}

void ToolKeeper::prepared() {
  if (attempt_->unchanged) return finish(kToolInterval);
  // Where nobody recorded a source, somebody else put the tool there; that is no leave to go back.
  const auto& before = attempt_->sourceBefore;
  const bool sameSource = before.empty() || before == attempt_->source.name();
  const auto objection = objectionTo(attempt_->version, attempt_->present, sameSource);
  if (objection) return fail(*objection, kToolInterval);
  if (!s_.zsh) return fail("this machine has no zsh to check it with");
  const auto account = s_.account();
  if (!account) return fail(account.error().text);
  attempt_->child =
      s_.children.start({.executable = *s_.zsh,
                         .arguments = {"-f", "-n", attempt_->place.candidate().string()},
                         .environment = toolEnvironment("/"),
                         .runAs = *account,
                         .timeLimit = kSyntaxTime,
                         .outputLimit = 16U << 10U,
                         .endsGroup = true,
                         .bounds = kLabelBounds},
                        nullptr, lifeline_.guard([this](const Result<ChildExit>& exit) { checked(exit); }));
}

void ToolKeeper::checked(const Result<ChildExit>& exit) {
  attempt_->child.reset();
  if (!exit) return fail(exit.error().text);
  if (exit->code != 0) return fail("its syntax is damaged", kToolInterval);
  runThen(
      s_.work, s_.main,
      [attempt = attempt_] { return attempt->place.install(attempt->edition, attempt->source.name()); },
      lifeline_.guard([this](const Status& status) { installed(status); }));
}

void ToolKeeper::installed(const Status& status) {
  if (!status) return fail(status.error().text);
  log_.info(fmt::format("Installomator {} ({}) is in place, with {} fragment file(s).", attempt_->version->version,
                        attempt_->source.name(), attempt_->edition.fragments.size()));
  told_.clear();
  finish(kToolInterval);
}

void ToolKeeper::fail(std::string_view why, Duration again) {
  const auto text = fmt::format("Installomator ({}) was not taken: {}.", attempt_->source.name(), why);
  if (std::exchange(told_, text) != text) log_.warning(text);
  attempt_->place.dropCandidate();
  finish(again);
}

void ToolKeeper::finish(Duration again) {
  attempt_.reset();
  next_ = s_.clock.steadyNow() + again;
}

}  // namespace corvane
