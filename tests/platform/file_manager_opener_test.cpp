#include "platform/dbus/file_manager_opener.h"

#include <mutex>

#include "support/bus_test.h"

namespace corvane::testing {

using FileManagerOpenerTest = BusLinkedTest;

TEST_F(FileManagerOpenerTest, TheFileManagerIsToldWhichFileAndItsRefusalIsHeard) {
  std::vector<Status> answers;
  FileManagerOpener opener(link_);
  const auto reveal = [&] {
    opener.reveal("/Library/Logs/a b%/crv.log", [&](Status status) { answers.push_back(std::move(status)); });
  };
  reveal();  // nobody is there
  ASSERT_TRUE(loop_.wait([&] { return answers.size() == 1; }));
  EXPECT_FALSE(answers.front());

  std::mutex mutex;
  std::vector<std::string> shown;
  BusService manager(bus_, "org.freedesktop.FileManager1");
  manager.at("/org/freedesktop/FileManager1")
      .registerMethod("ShowItems")
      .onInterface("org.freedesktop.FileManager1")
      .implementedAs([&](const std::vector<std::string>& uris, const std::string&) {
        const std::scoped_lock lock(mutex);
        shown.insert(shown.end(), uris.begin(), uris.end());
      });
  manager.answer();
  reveal();
  ASSERT_TRUE(loop_.wait([&] { return answers.size() == 2; }));
  EXPECT_TRUE(answers.back()) << answers.back().error().text;
  const std::scoped_lock lock(mutex);
  EXPECT_THAT(shown, ElementsAre("file:///Library/Logs/a%20b%25/crv.log"));
}

}  // namespace corvane::testing
