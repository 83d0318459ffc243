// The dashboard as values: what each element shows, whether it stands, and whether it can be pressed. No
// layout, no colour values and no text is decided anywhere else.
#pragma once

#include <string>
#include <vector>

#include "presentation/page_fields.h"

namespace corvane {

struct PageButton {
  std::string text;
  std::string help;
  bool visible = false;
  bool enabled = false;
  friend bool operator==(const PageButton&, const PageButton&) = default;
};

// A line about what goes on or went wrong, with its symbol; an empty text is no line.
struct PageMessage {
  std::string text;
  std::string symbol;
  ColorRole color = ColorRole::secondary;
  friend bool operator==(const PageMessage&, const PageMessage&) = default;
};

struct StatusCard {
  std::string key;  // "pending", "upToDate", "alerts"
  std::string title;
  std::string value;  // "—" while a check over everything runs
  std::string icon;
  ColorRole color = ColorRole::secondary;
  bool isPlaceholder = false;
  friend bool operator==(const StatusCard&, const StatusCard&) = default;
};

struct TimestampPill {
  std::string key;  // "discovery", "check", "deadline", "enforcement"
  std::string icon;
  std::string label;
  std::string timestamp;
  ColorRole iconColor = ColorRole::secondary;
  ColorRole valueColor = ColorRole::primary;
  friend bool operator==(const TimestampPill&, const TimestampPill&) = default;
};

struct FilterSegment {
  std::string key;  // the filter's case name
  std::string text;
  std::string help;
  bool selected = false;
  friend bool operator==(const FilterSegment&, const FilterSegment&) = default;
};

// One finished patch run in an expanded row.
struct ReceiptLine {
  std::string key;
  std::string symbol;
  ColorRole color = ColorRole::secondary;
  std::string time;
  std::string version;  // "2.1", "Tried 2.1" or empty
  std::string detail;   // of a failure: what it means, and Installomator's code
  friend bool operator==(const ReceiptLine&, const ReceiptLine&) = default;
};

struct DeferralEventLine {
  std::string key;
  std::string symbol;
  std::string text;
  std::string time;
  friend bool operator==(const DeferralEventLine&, const DeferralEventLine&) = default;
};

// One rule of an explanation.
struct WhyLine {
  std::string key;
  std::string symbol;  // whether it holds
  ColorRole color = ColorRole::secondary;
  std::string text;    // "Held after failures"
  std::string detail;  // what was found
  std::string source;  // "RequiredLabels, managed"; empty where no setting stands behind it
  friend bool operator==(const WhyLine&, const WhyLine&) = default;
};

// Why an application is where it is; empty texts while it is folded in.
struct WhyPart {
  bool visible = false;
  std::string title;   // "Pending"
  std::string reason;  // what decided
  std::string prompt;  // why there is a prompt now, or none
  std::string next;
  std::vector<WhyLine> lines;
  PageButton copy;
  std::string copyText;  // the whole as plain text
  friend bool operator==(const WhyPart&, const WhyPart&) = default;
};

// One application of the list.
struct AppStatusRow {
  std::string key;  // the label
  std::string name;
  std::string spokenText;  // the whole row, for those who hear it
  std::string monogram;    // stands where there is no icon
  std::string iconBundle;  // whose icon stands there, as a path; empty when nothing is installed
  std::string versionText;
  std::string statusText;
  ColorRole statusColor = ColorRole::secondary;
  std::string failureText;  // red, behind the status text
  bool showsStatusIcon = false;
  std::string statusIcon;
  ColorRole statusIconColor = ColorRole::clear;
  std::string statusIconHelp;
  PageButton recheck;
  PageButton update;
  std::string progressText;  // of this application while its update runs
  bool isExpanded = false;
  std::string expanderHelp;
  std::string receiptsTitle;
  std::string receiptsEmptyText;  // stands in place of the lines when there is none
  std::vector<ReceiptLine> receipts;
  std::string eventsTitle;  // empty when there are no events
  std::vector<DeferralEventLine> events;
  PageButton whyButton;
  WhyPart why;
  friend bool operator==(const AppStatusRow&, const AppStatusRow&) = default;
};

struct EmptyState {
  bool visible = false;
  std::string symbol;
  std::string title;
  std::string text;
  PageButton check;
  PageButton showAll;  // takes the filter away
  friend bool operator==(const EmptyState&, const EmptyState&) = default;
};

struct HelperSetupBanner {
  bool visible = false;
  std::string helperLine;         // empty when the helper is fine
  std::string installomatorLine;  // empty when the script is there
  PageButton setUp;
  PageButton openSettings;
  PageButton reset;
  std::string resetConfirmationTitle;
  std::string resetConfirmationText;
  PageButton confirmReset;
  PageButton cancelReset;
  friend bool operator==(const HelperSetupBanner&, const HelperSetupBanner&) = default;
};

struct SelfUpdateBanner {
  bool visible = false;
  std::string symbol;
  std::string title;
  std::string text;
  PageButton update;
  PageButton dismiss;
  friend bool operator==(const SelfUpdateBanner&, const SelfUpdateBanner&) = default;
};

struct DashboardPage {
  std::string title;
  std::string subtitle;
  PageButton discover;
  PageButton check;
  PageButton updateAll;
  PageMessage workLine;    // what runs now; empty when nothing does
  std::string statusLine;  // the one line that matters, with its symbol
  std::string statusSymbol;
  PageMessage message;  // the last thing that went wrong, else the workflow's transient line
  std::vector<StatusCard> cards;
  std::vector<TimestampPill> timestamps;
  PageMessage nextStep;  // what comes by itself and when, or that the cycle is complete; empty when nothing does
  std::string filterLabel;
  std::vector<FilterSegment> filters;
  PageButton recheckAll;
  EmptyState empty;
  HelperSetupBanner helperBanner;
  SelfUpdateBanner selfUpdateBanner;
  std::vector<AppStatusRow> rows;
  friend bool operator==(const DashboardPage&, const DashboardPage&) = default;
};

template <>
struct PageFields<PageButton> {
  static constexpr auto all =
      std::make_tuple(pageField("text", &PageButton::text), pageField("help", &PageButton::help),
                      pageField("visible", &PageButton::visible), pageField("enabled", &PageButton::enabled));
};
template <>
struct PageFields<PageMessage> {
  static constexpr auto all =
      std::make_tuple(pageField("text", &PageMessage::text), pageField("symbol", &PageMessage::symbol),
                      pageField("color", &PageMessage::color));
};
template <>
struct PageFields<StatusCard> {
  static constexpr auto all =
      std::make_tuple(pageField("key", &StatusCard::key), pageField("title", &StatusCard::title),
                      pageField("value", &StatusCard::value), pageField("icon", &StatusCard::icon),
                      pageField("color", &StatusCard::color), pageField("isPlaceholder", &StatusCard::isPlaceholder));
};
template <>
struct PageFields<TimestampPill> {
  static constexpr auto all = std::make_tuple(
      pageField("key", &TimestampPill::key), pageField("icon", &TimestampPill::icon),
      pageField("label", &TimestampPill::label), pageField("timestamp", &TimestampPill::timestamp),
      pageField("iconColor", &TimestampPill::iconColor), pageField("valueColor", &TimestampPill::valueColor));
};
template <>
struct PageFields<FilterSegment> {
  static constexpr auto all =
      std::make_tuple(pageField("key", &FilterSegment::key), pageField("text", &FilterSegment::text),
                      pageField("help", &FilterSegment::help), pageField("selected", &FilterSegment::selected));
};
template <>
struct PageFields<ReceiptLine> {
  static constexpr auto all =
      std::make_tuple(pageField("key", &ReceiptLine::key), pageField("symbol", &ReceiptLine::symbol),
                      pageField("color", &ReceiptLine::color), pageField("time", &ReceiptLine::time),
                      pageField("version", &ReceiptLine::version), pageField("detail", &ReceiptLine::detail));
};
template <>
struct PageFields<DeferralEventLine> {
  static constexpr auto all =
      std::make_tuple(pageField("key", &DeferralEventLine::key), pageField("symbol", &DeferralEventLine::symbol),
                      pageField("text", &DeferralEventLine::text), pageField("time", &DeferralEventLine::time));
};
template <>
struct PageFields<WhyLine> {
  static constexpr auto all = std::make_tuple(
      pageField("key", &WhyLine::key), pageField("symbol", &WhyLine::symbol), pageField("color", &WhyLine::color),
      pageField("text", &WhyLine::text), pageField("detail", &WhyLine::detail), pageField("source", &WhyLine::source));
};
template <>
struct PageFields<WhyPart> {
  static constexpr auto all =
      std::make_tuple(pageField("visible", &WhyPart::visible), pageField("title", &WhyPart::title),
                      pageField("reason", &WhyPart::reason), pageField("prompt", &WhyPart::prompt),
                      pageField("next", &WhyPart::next), pageField("lines", &WhyPart::lines),
                      pageField("copy", &WhyPart::copy), pageField("copyText", &WhyPart::copyText));
};
template <>
struct PageFields<AppStatusRow> {
  static constexpr auto all = std::make_tuple(
      pageField("key", &AppStatusRow::key), pageField("name", &AppStatusRow::name),
      pageField("spokenText", &AppStatusRow::spokenText), pageField("monogram", &AppStatusRow::monogram),
      pageField("iconBundle", &AppStatusRow::iconBundle), pageField("versionText", &AppStatusRow::versionText),
      pageField("statusText", &AppStatusRow::statusText), pageField("statusColor", &AppStatusRow::statusColor),
      pageField("failureText", &AppStatusRow::failureText),
      pageField("showsStatusIcon", &AppStatusRow::showsStatusIcon), pageField("statusIcon", &AppStatusRow::statusIcon),
      pageField("statusIconColor", &AppStatusRow::statusIconColor),
      pageField("statusIconHelp", &AppStatusRow::statusIconHelp), pageField("recheck", &AppStatusRow::recheck),
      pageField("update", &AppStatusRow::update), pageField("progressText", &AppStatusRow::progressText),
      pageField("isExpanded", &AppStatusRow::isExpanded), pageField("expanderHelp", &AppStatusRow::expanderHelp),
      pageField("receiptsTitle", &AppStatusRow::receiptsTitle),
      pageField("receiptsEmptyText", &AppStatusRow::receiptsEmptyText), pageField("receipts", &AppStatusRow::receipts),
      pageField("eventsTitle", &AppStatusRow::eventsTitle), pageField("events", &AppStatusRow::events),
      pageField("whyButton", &AppStatusRow::whyButton), pageField("why", &AppStatusRow::why));
};
template <>
struct PageFields<EmptyState> {
  static constexpr auto all =
      std::make_tuple(pageField("visible", &EmptyState::visible), pageField("symbol", &EmptyState::symbol),
                      pageField("title", &EmptyState::title), pageField("text", &EmptyState::text),
                      pageField("check", &EmptyState::check), pageField("showAll", &EmptyState::showAll));
};
template <>
struct PageFields<HelperSetupBanner> {
  static constexpr auto all = std::make_tuple(
      pageField("visible", &HelperSetupBanner::visible), pageField("helperLine", &HelperSetupBanner::helperLine),
      pageField("installomatorLine", &HelperSetupBanner::installomatorLine),
      pageField("setUp", &HelperSetupBanner::setUp), pageField("openSettings", &HelperSetupBanner::openSettings),
      pageField("reset", &HelperSetupBanner::reset),
      pageField("resetConfirmationTitle", &HelperSetupBanner::resetConfirmationTitle),
      pageField("resetConfirmationText", &HelperSetupBanner::resetConfirmationText),
      pageField("confirmReset", &HelperSetupBanner::confirmReset),
      pageField("cancelReset", &HelperSetupBanner::cancelReset));
};
template <>
struct PageFields<SelfUpdateBanner> {
  static constexpr auto all =
      std::make_tuple(pageField("visible", &SelfUpdateBanner::visible), pageField("symbol", &SelfUpdateBanner::symbol),
                      pageField("title", &SelfUpdateBanner::title), pageField("text", &SelfUpdateBanner::text),
                      pageField("update", &SelfUpdateBanner::update), pageField("dismiss", &SelfUpdateBanner::dismiss));
};
template <>
struct PageFields<DashboardPage> {
  static constexpr auto all = std::make_tuple(
      pageField("title", &DashboardPage::title), pageField("subtitle", &DashboardPage::subtitle),
      pageField("discover", &DashboardPage::discover), pageField("check", &DashboardPage::check),
      pageField("updateAll", &DashboardPage::updateAll), pageField("workLine", &DashboardPage::workLine),
      pageField("statusLine", &DashboardPage::statusLine), pageField("statusSymbol", &DashboardPage::statusSymbol),
      pageField("message", &DashboardPage::message), pageField("cards", &DashboardPage::cards),
      pageField("timestamps", &DashboardPage::timestamps), pageField("nextStep", &DashboardPage::nextStep),
      pageField("filterLabel", &DashboardPage::filterLabel), pageField("filters", &DashboardPage::filters),
      pageField("recheckAll", &DashboardPage::recheckAll), pageField("empty", &DashboardPage::empty),
      pageField("helperBanner", &DashboardPage::helperBanner),
      pageField("selfUpdateBanner", &DashboardPage::selfUpdateBanner), pageField("rows", &DashboardPage::rows));
};

}  // namespace corvane
