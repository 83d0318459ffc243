#include "core/client/helper_messages.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <span>
#include <utility>

#include "core/client/xpc_service_client.h"

namespace corvane {
namespace {

constexpr std::string_view kVersionKey = "version";
constexpr std::string_view kIdKey = "id";
constexpr std::string_view kOperationKey = "op";
constexpr std::string_view kLabelsKey = "labels";
constexpr std::string_view kStageKey = "alsoStageLabels";
constexpr std::string_view kLatestKey = "includeLatestVersions";

struct OperationForm {
  std::string_view name;
  std::span<const std::string_view> arguments;
  Result<HelperQuestion> (*read)(const JsonObject&);
};

std::unexpected<Error> malformed(std::string text) {
  return std::unexpected(helperError(HelperErrorCode::malformed, std::move(text)));
}

bool isLabelText(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
  });
}

Result<Labels> readLabels(const JsonObject& body, std::string_view key) {
  const auto* value = body.find(key);
  const auto* list = value ? value->array() : nullptr;
  if (!list) return malformed(fmt::format("\"{}\" must be a list of labels", key));
  if (list->size() > kHelperLabelsLimit)
    return std::unexpected(helperError(
        HelperErrorCode::tooLarge,
        fmt::format("\"{}\" holds {} labels, at most {} may be asked for", key, list->size(), kHelperLabelsLimit)));
  Labels labels;
  labels.reserve(list->size());
  for (const auto& entry : *list) {
    const auto text = entry.string();
    if (!text) return malformed(fmt::format("\"{}\" must be a list of labels", key));
    if (text->size() > kHelperLabelLengthLimit)
      return std::unexpected(helperError(
          HelperErrorCode::tooLarge,
          fmt::format("a label of {} characters, at most {} are allowed", text->size(), kHelperLabelLengthLimit)));
    if (!isLabelText(*text)) return malformed(fmt::format("\"{}\" holds a text that can be no label", key));
    labels.emplace_back(std::string(*text));
  }
  return withoutDuplicates(labels);
}

template <class T>
Result<HelperQuestion> readNothing(const JsonObject&) {
  return HelperQuestion(T{});
}

Result<HelperQuestion> readForLabels(const JsonObject& body) {
  auto labels = readLabels(body, kLabelsKey);
  if (!labels) return std::unexpected(labels.error());
  const auto* latest = body.find(kLatestKey);
  const auto flag = latest ? latest->boolean() : std::nullopt;
  if (!flag) return malformed(fmt::format("\"{}\" must be true or false", kLatestKey));
  return ask::DiscoverForLabels{.labels = std::move(*labels), .includeLatestVersions = *flag};
}

Result<HelperQuestion> readPatching(const JsonObject& body) {
  auto labels = readLabels(body, kLabelsKey);
  if (!labels) return std::unexpected(labels.error());
  auto staged = readLabels(body, kStageKey);
  if (!staged) return std::unexpected(staged.error());
  if (labels->empty() && staged->empty()) return malformed("no label to install and none to stage");
  return ask::StartPatching{.labels = std::move(*labels), .alsoStageLabels = std::move(*staged)};
}

constexpr std::array kForLabelsArguments = {kLabelsKey, kLatestKey};
constexpr std::array kPatchingArguments = {kLabelsKey, kStageKey};

// In the order of HelperQuestion's alternatives.
const std::array kOperations = {
    OperationForm{"status", {}, readNothing<ask::Status>},
    OperationForm{"discoverInstalled", {}, readNothing<ask::DiscoverInstalled>},
    OperationForm{"discoverWithUpdates", {}, readNothing<ask::DiscoverWithUpdates>},
    OperationForm{"discoverForLabels", kForLabelsArguments, readForLabels},
    OperationForm{"startPatching", kPatchingArguments, readPatching},
    OperationForm{"patchingProgress", {}, readNothing<ask::PatchingProgress>},
};
static_assert(kOperations.size() == std::variant_size_v<HelperQuestion>);

JsonValue labelList(const Labels& labels) {
  JsonArray list;
  for (const auto& label : labels) list.emplace_back(label.text);
  return list;
}

Status checkFieldNames(const JsonObject& body, const OperationForm& form) {
  for (const auto& [key, value] : body.entries()) {
    if (key == kVersionKey || key == kIdKey || key == kOperationKey) continue;
    if (std::ranges::find(form.arguments, key) == form.arguments.end())
      return malformed(fmt::format("the operation {} was given a field that it does not know", form.name));
  }
  return {};
}

Status checkVersion(const JsonObject& body) {
  const auto* value = body.find(kVersionKey);
  const auto version = value ? value->integer() : std::nullopt;
  if (!version) return malformed("\"version\" must be a whole number");
  if (*version != kHelperProtocolVersion)
    return std::unexpected(helperError(HelperErrorCode::version, fmt::format("this helper speaks version {}, not {}",
                                                                             kHelperProtocolVersion, *version)));
  return {};
}

Result<HelperQuestion> readQuestion(const JsonObject& body) {
  if (auto version = checkVersion(body); !version) return std::unexpected(version.error());
  const auto* operation = body.find(kOperationKey);
  const auto name = operation ? operation->string() : std::nullopt;
  if (!name) return malformed("\"op\" must be a text");
  const auto form = std::ranges::find(kOperations, *name, &OperationForm::name);
  if (form == kOperations.end())
    return std::unexpected(helperError(HelperErrorCode::unknownOperation, "this helper has no such operation"));
  if (auto names = checkFieldNames(body, *form); !names) return std::unexpected(names.error());
  return form->read(body);
}

std::string readId(const JsonObject& body) {
  const auto* value = body.find(kIdKey);
  const auto id = value ? value->string() : std::nullopt;
  return id && id->size() <= kHelperIdLengthLimit ? std::string(*id) : std::string();
}

Error wrongAnswer(std::string_view what) {
  return helperError(HelperErrorCode::malformed, fmt::format("the helper's answer holds {}", what));
}

// A field of an answer, read by one of JsonValue's readers.
template <class T>
Result<T> field(const JsonValue& value, std::string_view key, std::optional<T> (JsonValue::*read)() const) {
  const auto* found = value.find(key);
  auto read_ = found ? (found->*read)() : std::nullopt;
  if (!read_) return std::unexpected(wrongAnswer(fmt::format("no readable \"{}\"", key)));
  return *read_;
}

Error errorFromJson(const JsonValue& value) {
  const auto domain = field(value, "domain", &JsonValue::string);
  const auto code = field(value, "code", &JsonValue::integer);
  const auto text = field(value, "text", &JsonValue::string);
  if (!domain || domain->empty() || !code || !std::in_range<int>(*code) || !text)
    return wrongAnswer("an unreadable error");
  return {.domain = std::string(*domain), .code = static_cast<int>(*code), .text = std::string(*text)};
}

}  // namespace

Error helperError(HelperErrorCode code, std::string text) {
  return {.domain = XPCError::domain, .code = static_cast<int>(code), .text = std::move(text)};
}

bool isHelperError(const Error& error, HelperErrorCode code) {
  return error.domain == XPCError::domain && error.code == static_cast<int>(code);
}

std::string_view operationName(const HelperQuestion& question) { return kOperations[question.index()].name; }

std::string composeRequest(const HelperRequest& request) {
  JsonObject body{{std::string(kVersionKey), kHelperProtocolVersion},
                  {std::string(kIdKey), request.id},
                  {std::string(kOperationKey), operationName(request.question)}};
  if (const auto* scoped = std::get_if<ask::DiscoverForLabels>(&request.question)) {
    body.set(std::string(kLabelsKey), labelList(scoped->labels));
    body.set(std::string(kLatestKey), scoped->includeLatestVersions);
  }
  if (const auto* patching = std::get_if<ask::StartPatching>(&request.question)) {
    body.set(std::string(kLabelsKey), labelList(patching->labels));
    body.set(std::string(kStageKey), labelList(patching->alsoStageLabels));
  }
  return writeJson(body);
}

std::expected<HelperRequest, RefusedRequest> parseRequest(std::string_view body) {
  const auto refuse = [](std::string id, Error error) {
    return std::unexpected(RefusedRequest{.id = std::move(id), .error = std::move(error)});
  };
  const auto value = parseJsonOfDistinctKeys(body);
  if (!value)
    return refuse({}, helperError(HelperErrorCode::malformed, "the request is no JSON: " + value.error().text));
  const auto* object = value->object();
  if (!object) return refuse({}, helperError(HelperErrorCode::malformed, "the request must be an object"));
  auto id = readId(*object);
  if (id.empty())
    return refuse({}, helperError(HelperErrorCode::malformed,
                                  fmt::format("\"id\" must be a text of 1 to {} characters", kHelperIdLengthLimit)));
  auto question = readQuestion(*object);
  if (!question) return refuse(std::move(id), std::move(question.error()));
  return HelperRequest{.id = std::move(id), .question = std::move(*question)};
}

std::string composeAnswer(std::string_view id, JsonValue result) {
  return writeJson(JsonObject{
      {std::string(kVersionKey), kHelperProtocolVersion}, {std::string(kIdKey), id}, {"result", std::move(result)}});
}

std::string composeRefusal(std::string_view id, const Error& error) {
  return writeJson(
      JsonObject{{std::string(kVersionKey), kHelperProtocolVersion},
                 {std::string(kIdKey), id},
                 {"error", JsonObject{{"domain", error.domain}, {"code", error.code}, {"text", error.text}}}});
}

Result<JsonValue> parseAnswer(std::string_view body, std::string_view id) {
  auto value = parseJson(body);
  if (!value) return std::unexpected(wrongAnswer("no JSON: " + value.error().text));
  const auto version = field(*value, kVersionKey, &JsonValue::integer);
  if (!version) return std::unexpected(version.error());
  const auto* error = value->find("error");
  if (*version != kHelperProtocolVersion && !error)
    return std::unexpected(helperError(HelperErrorCode::version, fmt::format("the helper speaks version {}, not {}",
                                                                             *version, kHelperProtocolVersion)));
  const auto answered = field(*value, kIdKey, &JsonValue::string);
  if (!answered) return std::unexpected(answered.error());
  if (*answered != id && !(error && answered->empty())) return std::unexpected(wrongAnswer("another request's id"));
  if (error) return std::unexpected(errorFromJson(*error));
  const auto* result = value->find("result");
  if (!result) return std::unexpected(wrongAnswer("neither result nor error"));
  return *result;
}

JsonValue toJson(const StatusInfo& status) {
  return JsonObject{{"helperVersion", status.helperVersion},
                    {"processIdentifier", status.processIdentifier},
                    {"startedAt", secondsSince2001(status.startedAt)},
                    {"installomatorAvailable", status.installomatorAvailable}};
}

Result<StatusInfo> statusInfoFromJson(const JsonValue& value) {
  const auto version = field(value, "helperVersion", &JsonValue::string);
  if (!version) return std::unexpected(version.error());
  const auto pid = field(value, "processIdentifier", &JsonValue::integer);
  if (!pid) return std::unexpected(pid.error());
  const auto started = field(value, "startedAt", &JsonValue::number);
  if (!started) return std::unexpected(started.error());
  const auto available = field(value, "installomatorAvailable", &JsonValue::boolean);
  if (!available) return std::unexpected(available.error());
  return StatusInfo{.helperVersion = std::string(*version),
                    .processIdentifier = *pid,
                    .startedAt = dateFromSecondsSince2001(*started),
                    .installomatorAvailable = *available};
}

JsonValue toJson(const PatchRunAnswer& answer) {
  return JsonObject{
      {"success", answer.success}, {"message", answer.message}, {"installedCount", answer.installedCount}};
}

Result<PatchRunAnswer> patchRunAnswerFromJson(const JsonValue& value) {
  const auto success = field(value, "success", &JsonValue::boolean);
  if (!success) return std::unexpected(success.error());
  const auto message = field(value, "message", &JsonValue::string);
  if (!message) return std::unexpected(message.error());
  const auto installed = field(value, "installedCount", &JsonValue::integer);
  if (!installed) return std::unexpected(installed.error());
  return PatchRunAnswer{.success = *success, .message = std::string(*message), .installedCount = *installed};
}

JsonValue toJson(const PatchProgressInfo& progress) {
  return JsonObject{{"isActive", progress.isActive},
                    {"currentLabel", progress.currentLabel},
                    {"completedCount", progress.completedCount},
                    {"totalLabels", progress.totalLabels}};
}

Result<PatchProgressInfo> patchProgressFromJson(const JsonValue& value) {
  const auto active = field(value, "isActive", &JsonValue::boolean);
  if (!active) return std::unexpected(active.error());
  const auto label = field(value, "currentLabel", &JsonValue::string);
  if (!label) return std::unexpected(label.error());
  const auto completed = field(value, "completedCount", &JsonValue::integer);
  if (!completed) return std::unexpected(completed.error());
  const auto total = field(value, "totalLabels", &JsonValue::integer);
  if (!total) return std::unexpected(total.error());
  return PatchProgressInfo{
      .isActive = *active, .currentLabel = std::string(*label), .completedCount = *completed, .totalLabels = *total};
}

}  // namespace corvane
