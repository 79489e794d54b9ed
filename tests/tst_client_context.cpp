#include <QCoreApplication>
#include <QtTest>

#include "base/variant/variant.h"
#include "talvex_common/utils/context.h"
#include "talvex_common/utils/home_page.h"

using base::variant::Variant;
namespace utils = talvex_common::utils;

namespace {

Variant Corners(int start_x, int start_y, int end_x, int end_y) {
  Variant info(base::variant::kMap);
  info.Set("start_x", start_x);
  info.Set("start_y", start_y);
  info.Set("end_x", end_x);
  info.Set("end_y", end_y);
  return info;
}

}  // namespace

class tst_ClientContext : public QObject {
  Q_OBJECT

 private slots:
  void cleanup() {
    utils::SetNxHomePage(false);
    utils::SetHomeViewInfo(Variant());
    utils::context::SetAppName("");
  }

  void nxHomePage_defaultsToFalse_andFollowsTheSetter() {
    QCOMPARE(utils::IsNxHomePage(), false);
    utils::SetNxHomePage(true);
    QCOMPARE(utils::IsNxHomePage(), true);
    utils::SetNxHomePage(false);
    QCOMPARE(utils::IsNxHomePage(), false);
  }

  void homeViewInfo_noneSet_givesFalseAndLeavesTheTargetAlone() {
    Variant info(base::variant::kMap);
    info.Set("mine", 1);
    QCOMPARE(utils::GetHomeViewInfo(info), false);
    QVERIFY(info.Has("mine"));
    QCOMPARE(info.AsMap().size(), size_t(1));
  }

  void homeViewInfo_roundTripsACopy() {
    Variant corners = Corners(10, 20, 109, 219);
    utils::SetHomeViewInfo(corners);
    corners.Set("start_x", 999);  // later changes of the caller's value stay with the caller
    Variant info(base::variant::kMap);
    info.Set("stale", 1);
    QCOMPARE(utils::GetHomeViewInfo(info), true);
    QVERIFY(info == Corners(10, 20, 109, 219));
    QVERIFY(!info.Has("stale"));  // the target is replaced, not merged
    QCOMPARE(info.GetInt32("end_y", 0), 219);
    // A second read gives the same again.
    Variant again;
    QCOMPARE(utils::GetHomeViewInfo(again), true);
    QVERIFY(again == info);
  }

  void homeViewInfo_nonMapClearsIt() {
    utils::SetHomeViewInfo(Corners(1, 2, 3, 4));
    utils::SetHomeViewInfo(Variant("not a map"));
    Variant info;
    QCOMPARE(utils::GetHomeViewInfo(info), false);
    QCOMPARE(info.GetType(), base::variant::kNull);
  }

  void appName_defaultsToTheApplicationNameInUtf8() {
    QCoreApplication::setApplicationName(QString::fromUtf8("M\xC3\xB6te"));
    QCOMPARE(utils::context::GetAppName(), std::string("M\xC3\xB6te"));
    QCoreApplication::setApplicationName("Other");
    QCOMPARE(utils::context::GetAppName(), std::string("Other"));  // read at each call
  }

  void appName_setterOverrides_emptyRestoresTheDefault() {
    QCoreApplication::setApplicationName("FromQt");
    utils::context::SetAppName("\xE4\xBC\x9A\xE8\xAE\xAE");
    QCOMPARE(utils::context::GetAppName(), std::string("\xE4\xBC\x9A\xE8\xAE\xAE"));
    utils::context::SetAppName("");
    QCOMPARE(utils::context::GetAppName(), std::string("FromQt"));
  }
};

QTEST_GUILESS_MAIN(tst_ClientContext)
#include "tst_client_context.moc"
