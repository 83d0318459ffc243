#include "base/plist.h"

#include <limits>

#include "support/test.h"

namespace corvane {
namespace {

PlistValue sample(Duration fraction) {
  return PlistDict{{"text", "B\u00fcro & <Caf\u00e9> \U0001F600"},
                   {"plain", "plain"},
                   {"negative", -5},
                   {"least", std::numeric_limits<std::int64_t>::min()},
                   {"most", std::numeric_limits<std::int64_t>::max()},
                   {"real", 0.1},
                   {"yes", true},
                   {"no", false},
                   {"data", PlistData{std::string("\0\xff\x01z", 4)}},
                   {"date", dateFromSecondsSince2001(785419200) + fraction},
                   {"before", dateFromSecondsSince2001(-86400)},
                   {"list", PlistArray{1, "two", PlistArray{}, PlistDict{}}},
                   {"empty", ""}};
}

std::string xml(std::string_view inside) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + std::string(inside) + "</plist>\n";
}

// A binary list from its objects, each at the place that the table gives it.
std::string binary(const std::vector<std::string>& objects) {
  std::string bytes = "bplist00";
  std::string table;
  for (const auto& object : objects) {
    table += static_cast<char>(bytes.size());
    bytes += object;
  }
  const auto number = [](std::size_t value) { return std::string(7, '\0') + static_cast<char>(value); };
  const auto tableAt = bytes.size();
  return bytes + table + std::string(6, '\0') + "\x01\x01" + number(objects.size()) + number(0) + number(tableAt);
}

TEST(PlistTest, ValuesSurviveARoundTripInBothForms) {
  for (const auto format : {PlistFormat::xml, PlistFormat::binary}) {
    const auto value = sample(format == PlistFormat::binary ? 250ms : 0ms);
    const auto read = parsePlist(writePlist(value, format).value());
    ASSERT_TRUE(read) << read.error().text;
    EXPECT_EQ(read->format, format);
    for (const auto& [key, expected] : *value.dict()) EXPECT_EQ(read->root.dict()->at(key), expected) << key;
    EXPECT_EQ(read->root, value);
  }
}

TEST(PlistTest, ReadsTheXmlThatOthersWrite) {
  const auto read = parsePlist(
      "\xEF\xBB\xBF<?xml version=\"1.0\"?>\n<!DOCTYPE plist PUBLIC \"-//X//DTD PLIST 1.0//EN\" \"http://x/p.dtd\">\n"
      "<!-- made by hand --><plist version=\"1.0\"><dict><key>a&amp;b</key><string>x<![CDATA[<&>]]>&#xe9;</string>"
      "<!-- two --><key>n</key><integer> 0x10 </integer><key>big</key><integer>18446744073709551615</integer>"
      "<key>d</key><data>\n\tAQI=\n</data><key>t</key><true/><key>e</key><string/></dict></plist>\n<!-- end -->\n");
  ASSERT_TRUE(read) << read.error().text;
  EXPECT_EQ(read->root, (PlistDict{{"a&b", "x<&>\u00e9"},
                                   {"n", 16},
                                   {"big", 18446744073709551615.0},
                                   {"d", PlistData{"\x01\x02"}},
                                   {"t", true},
                                   {"e", ""}}));
}

TEST(PlistTest, WhatIsWrittenCanBeReadAndTheRestIsRefused) {
  const auto nested = [](int depth) {
    PlistValue value("x");
    for (int i = 0; i < depth; ++i) value = PlistArray{value};
    return value;
  };
  for (const auto format : {PlistFormat::xml, PlistFormat::binary}) {
    const auto odd = writePlist(PlistDict{{"k\xff", "v\xff"}}, format);
    ASSERT_TRUE(odd);
    EXPECT_EQ(parsePlist(*odd)->root, (PlistDict{{"k\uFFFD", "v\uFFFD"}}));
    EXPECT_TRUE(parsePlist(writePlist(nested(256), format).value()));
    EXPECT_FALSE(writePlist(nested(257), format));
  }
}

TEST(PlistTest, EveryTruncationFails) {
  for (const auto format : {PlistFormat::xml, PlistFormat::binary}) {
    auto whole = writePlist(sample(0ms), format).value();
    while (whole.ends_with('\n')) whole.pop_back();
    ASSERT_TRUE(parsePlist(whole));
    for (std::size_t length = 0; length < whole.size(); ++length)
      EXPECT_FALSE(parsePlist(std::string_view(whole).substr(0, length))) << length;
  }
}

TEST(PlistTest, RefusesDamagedXml) {
  const auto nested = [](int depth) {
    std::string text;
    for (int i = 0; i < depth; ++i) text += "<array>";
    for (int i = 0; i < depth; ++i) text += "</array>";
    return text;
  };
  EXPECT_TRUE(parsePlist(xml(nested(200))));
  for (const auto& inside :
       {std::string(), std::string("<dict><key>a</key></dict>"), std::string("<dict><string>a</string></dict>"),
        std::string("<dict>"), std::string("<array><dict></array></dict>"), std::string("<integer>abc</integer>"),
        std::string("<integer></integer>"), std::string("<date>yesterday</date>"), std::string("<data>A</data>"),
        std::string("<real>1.x</real>"), std::string("<string>&bomb;</string>"), std::string("<string>&#0;</string>"),
        std::string("<true>x</true>"), std::string("<other/>"), std::string("<true/><true/>"),
        std::string("<string>\xff</string>"), std::string("<string>\0</string>", 18), nested(300), nested(200000)})
    EXPECT_FALSE(parsePlist(xml(inside))) << inside.substr(0, 40);
  EXPECT_FALSE(parsePlist("<!DOCTYPE plist [<!ENTITY a \"b\">]><plist><true/></plist>"));
  EXPECT_FALSE(parsePlist("{ a = b; }"));
}

TEST(PlistTest, RefusesHostileBinaries) {
  EXPECT_EQ(parsePlist(binary({"\xA1\x01", "\x09"}))->root, PlistArray{true});
  std::vector<std::string> bomb;
  for (char next = 1; next < 30; ++next) bomb.push_back(std::string("\xA2") + next + next);
  bomb.emplace_back("\x09");
  const std::pair<const char*, std::string> rows[] = {
      {"a value in itself", binary({std::string("\xA1\0", 2)})},
      {"a circle of two", binary({"\xA1\x01", std::string("\xA1\0", 2)})},
      {"shared values that double", binary(bomb)},
      {"a reference to nowhere", binary({"\xA1\x07"})},
      {"an array longer than the file", binary({"\xAF\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"})},
      {"text longer than the file", binary({"\x5F\x11\x7F\xFF"
                                            "a"})},
      {"a length that is no integer", binary({"\x5F\x51"
                                              "a"})},
      {"an integer of 128 bytes", binary({"\x17" + std::string(128, 'x')})},
      {"a date of one byte", binary({"\x30x"})},
      {"a date that is no number", binary({std::string("\x33\x7F\xF8\0\0\0\0\0\0", 9)})},
      {"a key that is a number", binary({"\xD1\x01\x01", "\x10\x05"})},
      {"an unknown kind", binary({"\xF0"})},
  };
  for (const auto& [what, bytes] : rows) EXPECT_FALSE(parsePlist(bytes)) << what;
}

}  // namespace
}  // namespace corvane
