// The catalogue holds together, and what is written from it reads as its readers expect.
#include "sample/catalogue.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>

#include "sample/code_signature.h"
#include "sample/label_writer.h"
#include "sample/tar_writer.h"

namespace corvane::sample {
namespace {

std::uint32_t bigAt(std::string_view bytes, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(bytes.at(at + i));
  return value;
}

std::string textAt(std::string_view bytes, std::size_t at) { return std::string(bytes.substr(at).data()); }

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

TEST(Catalogue, ShowsEachKindOfCase) {
  const auto labels = labelCatalogue();
  for (const auto source : {VersionSource::hang, VersionSource::garbage, VersionSource::down, VersionSource::none})
    EXPECT_TRUE(std::ranges::any_of(labels, [&](const auto& label) { return label.source == source; }));
  const auto apps = installedApplications();
  for (const auto executable : {Executable::thinArm64, Executable::thinIntel, Executable::universal})
    EXPECT_TRUE(std::ranges::any_of(apps, [&](const auto& app) { return app.executable == executable; }));
  EXPECT_TRUE(std::ranges::any_of(apps, [](const auto& app) { return app.format == PlistFormat::binary; }));
}

TEST(LabelFragment, HasHeadLiteralsAndEnd) {
  const LabelSpec label{.label = "quill",
                        .name = "Quill",
                        .latest = "2.4",
                        .team = "QU1LLHAVN0",
                        .alias = "quillapp",
                        .blockingProcesses = "Quill|Quill Agent"};
  EXPECT_EQ(labelFragment(label, "http://127.0.0.1:5000"),
            "quillapp|\\\nquill)\n"
            "    name=\"Quill\"\n"
            "    type=\"dmg\"\n"
            "    downloadURL=\"http://127.0.0.1:5000/download/quill.dmg\"\n"
            "    appNewVersion=$(curl -fsL \"http://127.0.0.1:5000/quill/version.txt\")\n"
            "    expectedTeamID=\"QU1LLHAVN0\"\n"
            "    blockingProcesses=( \"Quill\" \"Quill Agent\" )\n"
            "    ;;\n");
}

TEST(CodeSignature, NamesIdentifierTeamAndOwnLength) {
  const Signer signer{.identifier = "org.inkhaven.quill", .team = "QU1LLHAVN0"};
  const auto directory = codeDirectory(signer, std::string(5000, 'x'));
  EXPECT_EQ(bigAt(directory, 0), 0xfade0c02U);
  EXPECT_EQ(bigAt(directory, 4), directory.size());
  EXPECT_EQ(textAt(directory, bigAt(directory, 20)), "org.inkhaven.quill");
  EXPECT_EQ(textAt(directory, bigAt(directory, 48)), "QU1LLHAVN0");
  EXPECT_EQ(bigAt(directory, 28), 2U);
  EXPECT_EQ(bigAt(directory, 16) + 2 * 32, directory.size());
}

TEST(CodeSignature, UniversalFileHoldsTwoWholeSlices) {
  const Signer signer{.identifier = "org.ploverhill.typing", .team = "PL0VERH1LL"};
  const auto file = universalMachO(signer);
  ASSERT_EQ(bigAt(file, 0), 0xcafebabeU);
  ASSERT_EQ(bigAt(file, 4), 2U);
  EXPECT_EQ(file.substr(bigAt(file, 16), bigAt(file, 20)), thinMachO(Processor::intel, signer));
  EXPECT_EQ(file.substr(bigAt(file, 36), bigAt(file, 40)), thinMachO(Processor::arm64, signer));
}

TEST(CodeSignature, IsLeftOutWithoutATeam) {
  EXPECT_EQ(thinMachO(Processor::arm64, {.identifier = "a", .team = ""}).find("\xfa\xde\x0c\xc0"), std::string::npos);
}

TEST(TarWriter, RefusesPathsThatUstarCannotHold) {
  TarWriter tar;
  tar.file(std::string(150, 'd') + "/" + std::string(100, 'n'), "x", 0644);
  EXPECT_EQ(tar.finish().size(), 4U * 512);
  EXPECT_ANY_THROW(tar.file(std::string(150, 'd') + "/" + std::string(101, 'n'), "x", 0644));
}

}  // namespace
}  // namespace corvane::sample
