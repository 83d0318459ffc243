// What the desktop asks of every program's looks: dark or light, the size of text, and whether things may move.
#pragma once

#include <QDBusVariant>
#include <QObject>
#include <functional>

namespace corvane::ui {

struct Appearance {
  bool dark = false;
  bool reducedMotion = false;
  double textScale = 1;  // 0.8 to 2
  friend bool operator==(const Appearance&, const Appearance&) = default;
};

// Begins with what the palette says, then follows the desktop's settings service where there is one. Never
// waits for it. `changed` is called at once and at every change.
class DesktopAppearance final : public QObject {
  Q_OBJECT

 public:
  explicit DesktopAppearance(std::function<void(const Appearance&)> changed);

 private Q_SLOTS:
  void settingChanged(const QString& space, const QString& key, const QDBusVariant& value);

 private:
  void ask(const QString& space, const QString& key);
  void take(const QString& space, const QString& key, const QVariant& value);

  std::function<void(const Appearance&)> changed_;
  Appearance appearance_;
};

}  // namespace corvane::ui
