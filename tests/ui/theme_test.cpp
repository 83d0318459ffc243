// Whoever changes a colour must keep it legible, in both themes.

#include <QColor>
#include <QQmlComponent>
#include <QQmlEngine>
#include <cmath>

#include "support/test.h"

namespace corvane::ui {
namespace {

double luminance(const QColor& color) {
  const auto linear = [](double part) {
    return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor& one, const QColor& other) {
  const auto [low, high] = std::minmax({luminance(one), luminance(other)});
  return (high + 0.05) / (low + 0.05);
}

TEST(ThemeTest, textStandsOutFromEverySurfaceItLiesOn) {
  QQmlEngine engine;
  QQmlComponent component(&engine);
  component.setData("import QtQml\nQtObject { property var theme: Theme }", QUrl("qrc:/Corvane/Probe.qml"));
  const std::unique_ptr<QObject> probe(component.create());
  ASSERT_NE(probe, nullptr) << component.errorString().toStdString();
  auto* theme = probe->property("theme").value<QObject*>();
  ASSERT_NE(theme, nullptr);
  const auto color = [&](const char* name) { return theme->property(name).value<QColor>(); };
  for (const bool dark : {false, true}) {
    theme->setProperty("dark", dark);
    for (const char* surface : {"window", "sidebar", "card", "hover", "selected"}) {
      for (const char* text : {"primary", "secondary", "accentText", "green", "orange", "red", "blue"})
        EXPECT_GE(contrast(color(text), color(surface)), 4.5) << text << " on " << surface << (dark ? ", dark" : "");
      EXPECT_GE(contrast(color("yellow"), color(surface)), 3.0) << "yellow, of symbols only, on " << surface;
    }
    for (const char* button : {"accent", "accentHover"})
      EXPECT_GE(contrast(color("textOnAccent"), color(button)), 4.5) << button << (dark ? ", dark" : "");
  }
}

}  // namespace
}  // namespace corvane::ui
