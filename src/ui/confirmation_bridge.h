// The install confirmation as QML reads it, and its answers as QML gives them. Decides nothing.
#pragma once

#include <QObject>
#include <QString>
#include <QVariant>
#include <functional>
#include <utility>

#include "presentation/deferral_prompt_page.h"
#include "ui/page_variant.h"

namespace corvane::ui {

struct ConfirmationActions {
  std::function<void()> accept;
  std::function<void()> decline;
};

class ConfirmationBridge final : public QObject {
  Q_OBJECT
  Q_PROPERTY(QVariant page READ page NOTIFY pageChanged)
  Q_PROPERTY(QString windowTitle READ windowTitle WRITE setWindowTitle NOTIFY windowTitleChanged)

 public:
  explicit ConfirmationBridge(ConfirmationActions actions, QObject* parent = nullptr)
      : QObject(parent), actions_(std::move(actions)) {}

  void setPage(const ConfirmationPage& page) {
    if (page == shown_) return;
    shown_ = page;
    Q_EMIT pageChanged();
  }
  void setWindowTitle(const QString& title) {
    if (title == windowTitle_) return;
    windowTitle_ = title;
    Q_EMIT windowTitleChanged();
  }

  [[nodiscard]] QVariant page() const { return toVariant(shown_); }
  [[nodiscard]] QString windowTitle() const { return windowTitle_; }

  Q_INVOKABLE void accept() { actions_.accept(); }
  Q_INVOKABLE void decline() { actions_.decline(); }

 Q_SIGNALS:
  void pageChanged();
  void windowTitleChanged();

 private:
  ConfirmationActions actions_;
  ConfirmationPage shown_;
  QString windowTitle_;
};

}  // namespace corvane::ui
