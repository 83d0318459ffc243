// The deferral prompt as QML reads it, and its answers as QML gives them. Decides nothing.
#pragma once

#include <QObject>
#include <QString>
#include <functional>

#include "presentation/deferral_prompt_page.h"
#include "ui/page_map.h"

namespace corvane::ui {

struct PromptActions {
  std::function<void(std::int64_t minutes)> select;
  std::function<void()> defer;
  std::function<void()> install;
  std::function<void()> accept;
  std::function<void()> decline;
  std::function<void()> close;
};

class PromptBridge final : public QObject {
  Q_OBJECT
  Q_PROPERTY(QQmlPropertyMap* page READ page CONSTANT)
  Q_PROPERTY(QAbstractListModel* rows READ rows CONSTANT)
  Q_PROPERTY(QString windowTitle READ windowTitle WRITE setWindowTitle NOTIFY windowTitleChanged)

 public:
  explicit PromptBridge(PromptActions actions, QObject* parent = nullptr)
      : QObject(parent), actions_(std::move(actions)) {}

  void setPage(const DeferralPromptPage& page) { map_.set(page); }
  void setWindowTitle(const QString& title) {
    if (title == windowTitle_) return;
    windowTitle_ = title;
    Q_EMIT windowTitleChanged();
  }

  [[nodiscard]] QQmlPropertyMap* page() { return map_.fields(); }
  [[nodiscard]] QAbstractListModel* rows() { return map_.rows(); }
  [[nodiscard]] QString windowTitle() const { return windowTitle_; }

  Q_INVOKABLE void select(int minutes) { actions_.select(minutes); }
  Q_INVOKABLE void defer() { actions_.defer(); }
  Q_INVOKABLE void install() { actions_.install(); }
  Q_INVOKABLE void accept() { actions_.accept(); }
  Q_INVOKABLE void decline() { actions_.decline(); }
  Q_INVOKABLE void close() { actions_.close(); }

 Q_SIGNALS:
  void windowTitleChanged();

 private:
  PromptActions actions_;
  PageMap<DeferralPromptPage, PromptRow> map_;
  QString windowTitle_;
};

}  // namespace corvane::ui
