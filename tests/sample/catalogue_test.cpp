// The catalogue holds together, and what is written from it reads as its readers expect.
#include "sample/catalogue.h"

#include <fmt/format.h>

#include "sample/label_writer.h"
#include "sample/tar_writer.h"
#include "support/test.h"

namespace corvane::sample {
namespace {

bool isTeam(std::string_view team) {
  return team.size() == 10 && team.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789") == std::string_view::npos;
}

TEST(Catalogue, IsLargeEnoughAndHasNoNameTwice) {
  std::set<std::string_view> names;
  for (const auto& app : installedApplications()) EXPECT_TRUE(names.insert(app.name).second) << app.name;
  EXPECT_GE(names.size(), 30U);

  std::set<std::string> patterns;
  std::set<std::string> files;
  for (const auto& label : labelCatalogue()) {
    EXPECT_TRUE(patterns.insert(std::string(label.label)).second) << label.label;
    EXPECT_TRUE(files.insert(fragmentFileName(label)).second) << label.label;
    const auto alias = label.alias.empty() ? fmt::format("{} has none", label.label) : std::string(label.alias);
    EXPECT_TRUE(patterns.insert(alias).second) << alias;
  }
  EXPECT_GE(labelCatalogue().size(), 60U);
}

TEST(Catalogue, TeamsAreTenCharactersSoThatTheToolFindsThem) {
  for (const auto& app : installedApplications()) EXPECT_TRUE(app.team.empty() || isTeam(app.team)) << app.name;
  for (const auto& label : labelCatalogue()) EXPECT_TRUE(isTeam(label.team)) << label.label;
}

}  // namespace
}  // namespace corvane::sample
