// What is taken of an archive, and what makes it unusable.
#include "helper/tool_archive.h"

#include "helper/packed_tree.h"
#include "support/test.h"

namespace corvane {
namespace {

using testing::gzipped;
using testing::tarEnd;
using testing::tarEntry;

bool all(std::string_view) { return true; }
std::string extended(const std::string& record) {
  auto size = record.size() + 3;
  if (std::to_string(size).size() + record.size() + 2 != size) size = std::to_string(size).size() + record.size() + 2;
  return tarEntry("x", fmt::format("{} {}\n", size, record), 'x');
}

TEST(ToolArchive, GivesTheWantedFilesBelowTheOutermostFolder) {
  const std::string longPath = "top/" + std::string(120, 'a') + ".sh";
  const auto archive = tarEntry("pax_global_header", "52 comment=0\n", 'g') + tarEntry("top/", "", '5') +
                       tarEntry("top/a.sh", "one") + tarEntry("top/b.txt", "no") + tarEntry("top/link", "", '2') +
                       extended("path=" + longPath) + tarEntry("top/short", "long") + tarEnd();
  const auto files = readToolArchive(gzipped(archive), [](std::string_view path) { return path.ends_with(".sh"); });
  ASSERT_TRUE(files) << files.error().text;
  EXPECT_EQ(*files, (ArchiveFiles{{"a.sh", "one"}, {longPath.substr(4), "long"}}));
}

TEST(ToolArchive, RefusesWhatIsDamagedOrLeadsElsewhere) {
  const auto good = tarEntry("top/a", "one");
  auto wrongSum = good;
  wrongSum[0] = 'T';
  auto hugeSize = tarEntry("top/a", "one");
  const std::pair<const char*, std::string> rows[] = {
      {"climbs", tarEntry("top/../../etc/cron.d/x", "x") + tarEnd()},
      {"absolute", tarEntry("/etc/x", "x") + tarEnd()},
      {"climbs by a long name", extended("path=top/../x") + tarEntry("top/a", "x") + tarEnd()},
      {"empty part", tarEntry("top//a", "x") + tarEnd()},
      {"at the top", tarEntry("a", "x") + tarEnd()},
      {"two folders", good + tarEntry("other/a", "x") + tarEnd()},
      {"twice", good + good + tarEnd()},
      {"wrong sum", wrongSum + tarEnd()},
      {"no end", good},
      {"torn", good.substr(0, 600)},
      {"another long-name form", tarEntry("top/a", "name", 'L') + tarEnd()},
      {"damaged extended header", tarEntry("x", "99999 path=top/a\n", 'x') + good + tarEnd()},
  };
  for (const auto& [what, tar] : rows) EXPECT_FALSE(readToolArchive(gzipped(tar), all)) << what;
  const auto packed = gzipped(good + tarEnd());
  for (std::size_t size = 0; size < packed.size(); ++size)
    EXPECT_FALSE(readToolArchive(packed.substr(0, size), all)) << "cut off behind " << size;
  EXPECT_FALSE(readToolArchive("<html>Not Found</html>", all));
}

TEST(ToolArchive, StopsAtItsLimitsAndNotBefore) {
  const auto packed = gzipped(tarEntry("top/a", std::string(600, 'x')) + tarEntry("top/b", "y") + tarEnd());
  const ArchiveLimits exact{.unpacked = 512 + 1024 + 512 + 512 + 1024, .entries = 2, .fileSize = 600};
  EXPECT_TRUE(readToolArchive(packed, all, exact));
  for (const auto limits : {ArchiveLimits{exact.unpacked - 1, 2, 600}, ArchiveLimits{exact.unpacked, 1, 600},
                            ArchiveLimits{exact.unpacked, 2, 599}})
    EXPECT_FALSE(readToolArchive(packed, all, limits));
  EXPECT_FALSE(readToolArchive(gzipped(tarEntry("top/a", std::string(70U << 20U, 'x')) + tarEnd()), all));
}

}  // namespace
}  // namespace corvane
