#include <QtTest>
#include <thread>
#include <typeinfo>

#include "base/variant/variant.h"
#include "qt_util/scheme_controller.h"
#include "scheme/controller_manager.h"

using base::variant::Variant;

namespace {

const char kHome[] = "talvex://page/home";
const char kHost[] = "talvex://page/nxui/host";

// A page controller that answers one method with the "scheme" argument it was given.
class EchoController : public framework::Controller {
 public:
  std::unique_ptr<Variant> CallHasResult(const std::string& method,
                                         std::unique_ptr<Variant> params) override {
    if (method != "echo" || !params) return {};
    return std::make_unique<Variant>(params->AsMap().at("scheme"));
  }
  void Call(const std::string& method, std::unique_ptr<Variant>) override { last_call = method; }
  std::string last_call;
};

std::unique_ptr<Variant> SchemeArgument() {
  auto params = std::make_unique<Variant>();
  params->Set("scheme", Variant(kHome));
  return params;
}

}  // namespace

class tst_ControllerManager : public QObject {
  Q_OBJECT

 private slots:
  void cleanup() {
    ControllerManager::Instance()->SetClosed(false);
    ControllerManager::Instance()->IocUnregister(kHome);
    ControllerManager::Instance()->IocUnregister(kHost);
  }

  void instance_isOneRegistry() {
    QVERIFY(ControllerManager::Instance());
    QCOMPARE(ControllerManager::Instance(), ControllerManager::Instance());
  }

  void unknownScheme_givesTheSharedDefaultController() {
    auto first = ControllerManager::Instance()->IocFind("talvex://page/never-registered");
    auto second = ControllerManager::Instance()->IocFind("");
    QVERIFY(first);
    QCOMPARE(first.get(), second.get());
    // The default is a plain Controller, the same type across the library boundary.
    const framework::Controller& plain = *first;
    QVERIFY(typeid(plain) == typeid(framework::Controller));
  }

  void defaultController_answersEveryCallWithNothing() {
    auto controller = ControllerManager::Instance()->IocFind(kHost);
    QVERIFY(!controller->GetSchemeView());
    QVERIFY(!controller->CallHasResult("get_qt_window", SchemeArgument()));
    QVERIFY(!controller->CallHasResult("get_window_handle", nullptr));
    controller->Call("anything", SchemeArgument());  // takes and drops the parameters
    QVERIFY(!controller->CallHasResult("get_qt_window_handle", SchemeArgument()));
    // Through the interface the same answers come back.
    talvex::SchemeControllerInterface* as_interface = controller.get();
    QVERIFY(!as_interface->CallHasResult("echo", SchemeArgument()));
  }

  void registeredScheme_givesItsController() {
    auto echo = std::make_shared<EchoController>();
    ControllerManager::Instance()->IocRegister(kHome, echo);
    auto found = ControllerManager::Instance()->IocFind(kHome);
    QCOMPARE(found.get(), echo.get());
    auto answer = found->CallHasResult("echo", SchemeArgument());
    QVERIFY(answer);
    QCOMPARE(QByteArray(answer->AsCStr()), QByteArray(kHome));
    found->Call("ping", nullptr);
    QCOMPARE(echo->last_call, std::string("ping"));
    // Other schemes still reach the default.
    QVERIFY(ControllerManager::Instance()->IocFind(kHost).get() != echo.get());
  }

  void registeringAgain_replaces_andUnregistering_fallsBack() {
    auto first = std::make_shared<EchoController>();
    auto second = std::make_shared<EchoController>();
    auto* manager = ControllerManager::Instance();
    const auto fallback = manager->IocFind("talvex://page/unknown");
    manager->IocRegister(kHome, first);
    manager->IocRegister(kHome, second);
    QCOMPARE(manager->IocFind(kHome).get(), second.get());
    QCOMPARE(first.use_count(), 1L);  // the registry let the first one go
    manager->IocUnregister(kHome);
    QCOMPARE(manager->IocFind(kHome).get(), fallback.get());
    manager->IocUnregister(kHome);  // unregistering twice is harmless
    QCOMPARE(manager->IocFind(kHome).get(), fallback.get());
  }

  void emptyRegistration_isIgnored() {
    auto echo = std::make_shared<EchoController>();
    auto* manager = ControllerManager::Instance();
    manager->IocRegister(kHome, echo);
    manager->IocRegister(kHome, nullptr);
    QCOMPARE(manager->IocFind(kHome).get(), echo.get());
    manager->IocRegister(kHost, nullptr);
    QVERIFY(manager->IocFind(kHost));
  }

  void closedRegistry_givesTheDefaultUntilOpenedAgain() {
    auto echo = std::make_shared<EchoController>();
    auto* manager = ControllerManager::Instance();
    const auto fallback = manager->IocFind("talvex://page/unknown");
    manager->IocRegister(kHome, echo);
    manager->SetClosed(true);
    QCOMPARE(manager->IocFind(kHome).get(), fallback.get());
    QVERIFY(!manager->IocFind(kHome)->CallHasResult("echo", SchemeArgument()));
    manager->SetClosed(false);
    QCOMPARE(manager->IocFind(kHome).get(), echo.get());
  }

  void concurrentUse_keepsLookupsNeverEmpty() {
    auto* manager = ControllerManager::Instance();
    auto echo = std::make_shared<EchoController>();
    std::atomic<int> empty{0};
    std::thread writer([&] {
      for (int i = 0; i < 2000; ++i) {
        manager->IocRegister(kHome, echo);
        manager->IocUnregister(kHome);
      }
    });
    std::thread reader([&] {
      for (int i = 0; i < 2000; ++i) empty += !manager->IocFind(kHome);
    });
    writer.join();
    reader.join();
    QCOMPARE(empty.load(), 0);
    QCOMPARE(echo.use_count(), 1L);
  }
};

QTEST_GUILESS_MAIN(tst_ControllerManager)
#include "tst_controller_manager.moc"
