// Converts (or only destroys) one deeply nested document, so that a depth the stack cannot hold
// kills this process, not the test that runs it:
//
//   variant_depth_probe to-qt|to-variant|drop-variant|drop-qvariant array|map DEPTH [STACK_KIB]
//
// to-qt converts a Variant chain with VariantToQVariant, to-variant a QVariant chain with
// QVariantToVariant; either checks the result's depth and then destroys the result and the
// document, as a client does. drop-variant and drop-qvariant only build a chain and destroy it.
// With STACK_KIB the work runs on a thread of that stack size, else on the main thread (whose
// stack is the process's limit, `ulimit -s`). Prints "ok" and exits 0 when the work is done
// and right; exits 2 with a message when the result is wrong or the arguments are; a stack
// overflow ends the process with a signal (or with the sanitizer's report).
//
// The deepest depth that still works is found by bisection, for example:
//
//   lo=1000; hi=200000; while [ $((hi - lo)) -gt 50 ]; do mid=$(((lo + hi) / 2));
//     if ./variant_depth_probe to-qt map $mid >/dev/null 2>&1; then lo=$mid; else hi=$mid; fi;
//   done; echo $lo
#include <QThread>
#include <QVariant>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

#include "base/variant/variant.h"
#include "qt_util/qt_variant_utils.h"
#include "support/deep_documents.h"

namespace {

int Fail(const std::string& message) {
  std::fprintf(stderr, "variant_depth_probe: %s\n", message.c_str());
  return 2;
}

// The work of one mode, on whichever thread runs it; false when its result is wrong. The
// document is built beforehand, on the main thread, without recursing.
std::function<bool()> Work(const std::string& mode, bool maps, int depth) {
  const auto code = maps ? base::variant::kMap : base::variant::kArray;
  const auto type = maps ? QMetaType::QVariantMap : QMetaType::QVariantList;
  if (mode == "to-qt") {
    auto* document = new base::variant::Variant(test_support::DeepVariant(depth, code));
    return [document, depth] {
      bool right = false;
      {
        QVariant result;
        QVariantUtil::VariantToQVariant(document, &result);
        right = test_support::QVariantDepth(result) == depth;
      }
      delete document;
      return right;
    };
  }
  if (mode == "to-variant") {
    auto* document = new QVariant(test_support::DeepQVariant(depth, type));
    return [document, depth] {
      bool right = false;
      {
        base::variant::Variant result;
        QVariantUtil::QVariantToVariant(document, &result);
        right = test_support::VariantDepth(result) == depth;
      }
      delete document;
      return right;
    };
  }
  if (mode == "drop-variant") {
    auto* document = new base::variant::Variant(test_support::DeepVariant(depth, code));
    return [document] {
      delete document;
      return true;
    };
  }
  if (mode == "drop-qvariant") {
    auto* document = new QVariant(test_support::DeepQVariant(depth, type));
    return [document] {
      delete document;
      return true;
    };
  }
  return {};
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4 && argc != 5) return Fail("usage: MODE array|map DEPTH [STACK_KIB]");
  const std::string kind = argv[2];
  const int depth = std::atoi(argv[3]);
  if ((kind != "array" && kind != "map") || depth <= 0) return Fail("bad kind or depth");
  const std::function<bool()> work = Work(argv[1], kind == "map", depth);
  if (!work) return Fail(std::string("unknown mode ") + argv[1]);

  bool right = false;
  if (argc == 5) {
    QThread* thread = QThread::create([&] { right = work(); });
    thread->setStackSize(static_cast<uint>(std::atoi(argv[4])) * 1024u);
    thread->start();
    thread->wait();
  } else {
    right = work();
  }
  if (!right) return Fail("the result is not a chain of " + std::to_string(depth) + " levels");
  std::fputs("ok\n", stdout);
  return 0;
}
