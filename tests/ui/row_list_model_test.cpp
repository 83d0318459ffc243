#include "ui/row_list_model.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <random>

#include "presentation/dashboard_page.h"
#include "support/test.h"

namespace corvane::ui {
namespace {

std::vector<AppStatusRow> rowsOf(const std::string& keys) {
  std::vector<AppStatusRow> rows;
  for (const char key : keys) rows.push_back({.key = std::string(1, key), .name = std::string(1, key)});
  return rows;
}

TEST(RowListModelTest, tellsAViewOfEachChangeAsTheModelContractAsks) {
  RowListModel<AppStatusRow> model;
  const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
  std::mt19937 random(7);
  const std::string all = "abcdefghij";
  for (int round = 0; round < 200; ++round) {
    auto keys = all;
    std::ranges::shuffle(keys, random);
    keys.resize(random() % (all.size() + 1));
    auto rows = rowsOf(keys);
    for (auto& row : rows) row.statusText = std::to_string(random() % 3);
    model.setRows(rows);
    ASSERT_EQ(model.rows(), rows);
  }
}

TEST(RowListModelTest, aChangedRowIsAnUpdateAndNothingElse) {
  RowListModel<AppStatusRow> model;
  model.setRows(rowsOf("abc"));
  const QSignalSpy updates(&model, &QAbstractItemModel::dataChanged);
  const QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
  const QSignalSpy moves(&model, &QAbstractItemModel::rowsMoved);
  auto rows = rowsOf("abc");
  rows[1].progressText = "Updating…";
  model.setRows(rows);
  model.setRows(rows);
  ASSERT_EQ(updates.size(), 1);
  EXPECT_EQ(updates[0][0].toModelIndex().row(), 1);
  EXPECT_EQ(resets.size() + moves.size(), 0);
}

TEST(RowListModelTest, answersEachRoleWithItsField) {
  RowListModel<AppStatusRow> model;
  auto rows = rowsOf("a");
  rows[0].update = {.text = "Update", .visible = true};
  rows[0].statusColor = ColorRole::orange;
  model.setRows(rows);
  const auto value = [&](const char* name) { return model.data(model.index(0), model.roleNames().key(name)); };
  EXPECT_EQ(value("key").toString(), "a");
  EXPECT_EQ(value("statusColor").toString(), "orange");
  EXPECT_EQ(value("update").toMap()["text"].toString(), "Update");
  EXPECT_FALSE(model.data(model.index(5), Qt::UserRole).isValid());
}

}  // namespace
}  // namespace corvane::ui
