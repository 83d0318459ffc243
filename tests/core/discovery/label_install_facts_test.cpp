#include "core/discovery/label_install_facts.h"

#include <fstream>

#include "support/recording_log.h"
#include "support/temporary_folder.h"
#include "support/test.h"

namespace corvane::testing {
namespace {

struct InstallFactsTest : ::testing::Test {
  InstallFactsTest() {
    std::filesystem::create_directories(labels());
    std::filesystem::create_directories(folder_.path() / "opt");
  }
  [[nodiscard]] std::filesystem::path labels() const { return folder_.path() / "labels"; }
  // A later write has a later stamp, however coarse the disk's clock is.
  void write(const std::string& file, const std::string& head, const std::string& body) {
    const auto path = labels() / file;
    std::ofstream(path) << head << ")\n    name=\"Quill\"\n    " << body << "\n    ;;\n";
    stamp_ += std::chrono::seconds(2);
    std::filesystem::last_write_time(path, stamp_);
    std::filesystem::last_write_time(labels(), stamp_);
  }
  [[nodiscard]] LabelInstallFacts of(const char* label) const { return facts_.installFacts(Label(label)); }

  TemporaryFolder folder_;
  RecordingLog log_;
  std::filesystem::file_time_type stamp_ = std::filesystem::file_time_type::clock::now();
  LabelFileInstallFacts facts_{labels(), folder_.path(), Logger(log_, "LabelCatalog")};
};

TEST_F(InstallFactsTest, areReadFromTheLabelsFileAndAnewWhenItChanged) {
  EXPECT_EQ(of("quill"), LabelInstallFacts());
  write("quill.sh", "quill", "blockingProcesses=( NONE )");
  EXPECT_TRUE(of("quill").blocksNothing);
  write("quill.sh", "quill", "updateTool=\"/opt/update\"");
  EXPECT_EQ(of("quill"), LabelInstallFacts()) << "the tool is not there";
  std::ofstream(folder_.path() / "opt/update") << "#!/bin/sh\n";
  EXPECT_EQ(of("quill"), LabelInstallFacts{.ownUpdateToolExists = true});
}

TEST_F(InstallFactsTest, areFoundForALabelInAFileOfAnotherName) {
  write("writers.sh", "quill|quillbeta", "blockingProcesses=( NONE )");
  EXPECT_TRUE(of("quillbeta").blocksNothing);
  write("quill.sh", "other", "blockingProcesses=( NONE )");
  EXPECT_TRUE(of("quill").blocksNothing) << "the file of its name is about another label";
  EXPECT_EQ(of("../labels/quill"), LabelInstallFacts());
  std::ofstream(labels() / "torn.sh") << "torn)\n    name=\"";
  EXPECT_EQ(of("torn"), LabelInstallFacts());
}

}  // namespace
}  // namespace corvane::testing
