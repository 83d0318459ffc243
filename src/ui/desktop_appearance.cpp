#include "ui/desktop_appearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QGuiApplication>
#include <QPalette>
#include <algorithm>

namespace corvane::ui {
namespace {

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString kAppearance = QStringLiteral("org.freedesktop.appearance");
const QString kColorScheme = QStringLiteral("color-scheme");
const QString kDesktop = QStringLiteral("org.gnome.desktop.interface");
const QString kAnimations = QStringLiteral("enable-animations");
const QString kTextScale = QStringLiteral("text-scaling-factor");

// The service's own numbers: 0 has no preference, 1 is dark, 2 is light.
constexpr uint kPrefersDark = 1;
constexpr uint kPrefersLight = 2;

// Beyond these the windows are not drawn to hold.
constexpr double kSmallestText = 0.8;
constexpr double kLargestText = 2;

bool paletteIsDark() {
  const auto palette = QGuiApplication::palette();
  return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

}  // namespace

DesktopAppearance::DesktopAppearance(std::function<void(const Appearance&)> changed)
    : changed_(std::move(changed)), appearance_{.dark = paletteIsDark()} {
  changed_(appearance_);
  auto bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return;
  bus.connect(kService, kPath, kInterface, QStringLiteral("SettingChanged"), this,
              SLOT(settingChanged(QString, QString, QDBusVariant)));
  ask(kAppearance, kColorScheme);
  ask(kDesktop, kAnimations);
  ask(kDesktop, kTextScale);
}

void DesktopAppearance::ask(const QString& space, const QString& key) {
  auto question = QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Read"));
  question << space << key;
  auto* answer = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
  QObject::connect(answer, &QDBusPendingCallWatcher::finished, this, [=, this] {
    const QDBusPendingReply<QDBusVariant> reply = *answer;
    if (!reply.isError()) take(space, key, reply.value().variant());
    answer->deleteLater();
  });
}

void DesktopAppearance::settingChanged(const QString& space, const QString& key, const QDBusVariant& value) {
  take(space, key, value.variant());
}

void DesktopAppearance::take(const QString& space, const QString& key, const QVariant& value) {
  // Some services wrap the value twice.
  const auto plain = value.canConvert<QDBusVariant>() ? value.value<QDBusVariant>().variant() : value;
  auto wanted = appearance_;
  if (space == kAppearance && key == kColorScheme) {
    if (plain.toUInt() == kPrefersDark) wanted.dark = true;
    if (plain.toUInt() == kPrefersLight) wanted.dark = false;
  } else if (space == kDesktop && key == kAnimations) {
    wanted.reducedMotion = !plain.toBool();
  } else if (space == kDesktop && key == kTextScale) {
    if (plain.toDouble() > 0) wanted.textScale = std::clamp(plain.toDouble(), kSmallestText, kLargestText);
  }
  if (wanted == appearance_) return;
  appearance_ = wanted;
  changed_(appearance_);
}

}  // namespace corvane::ui
