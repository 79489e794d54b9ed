// Both directions of QVariantUtil on a document of about 1 MB (as compact JSON): a map of arrays
// of maps holding strings (some non-ASCII), doubles, integers and booleans. The baselines are
// Qt's own conversions of the same document in the same run: QJsonDocument::toVariant() of the
// document already parsed into a QJsonDocument, beside VariantToQVariant; and
// QJsonDocument::fromVariant() of the QVariant form, beside QVariantToVariant of that same
// QVariant. Each iteration builds the result and destroys it.
//
// Counters: x_toVariant = VariantToQVariant time / toVariant() time; x_fromVariant =
// QVariantToVariant time / fromVariant() time (below 1 is faster). Throughput is the document's
// JSON size per second.
#include <benchmark/benchmark.h>

#include <QJsonDocument>
#include <QVariant>
#include <cstdio>
#include <string>

#include "base/variant/variant.h"
#include "bench_support.h"
#include "qt_util/qt_variant_utils.h"

namespace {

using base::variant::Variant;

constexpr int kRooms = 820;
constexpr int kParticipantsPerRoom = 8;

Variant Participant(int room, int index) {
  Variant participant(base::variant::kMap);
  participant.Set("name", Variant("Participant " + std::to_string(index) + " \xc3\xa9quipe " +
                                  std::to_string(room)));
  participant.Set("joined", Variant(1732370000.5 + room * 60 + index, false));
  participant.Set("audio_level", Variant(0.125 * index, false));
  participant.Set("video_streams", Variant(index % 3));
  participant.Set("muted", Variant(index % 2 == 0));
  participant.Set("host", Variant(index == 0));
  Variant tags(base::variant::kArray);
  tags.Add(Variant("speaker"));
  tags.Add(Variant("\xe4\xb8\xad\xe6\x96\x87"));
  participant.Set("tags", tags);
  return participant;
}

struct Documents {
  Variant variant;
  QVariant qvariant;  // the bridge's QVariant form of `variant`
  QJsonDocument json;
  qint64 json_bytes = 0;
};

const Documents& Docs() {
  static const Documents documents = [] {
    Documents docs;
    docs.variant = Variant(base::variant::kMap);
    for (int room = 0; room < kRooms; ++room) {
      Variant participants(base::variant::kArray);
      for (int i = 0; i < kParticipantsPerRoom; ++i) participants.Add(Participant(room, i));
      docs.variant.Set("room-" + std::to_string(room), participants);
    }
    QVariantUtil::VariantToQVariant(&docs.variant, &docs.qvariant);
    docs.json = QJsonDocument::fromVariant(docs.qvariant);
    docs.json_bytes = docs.json.toJson(QJsonDocument::Compact).size();
    return docs;
  }();
  return documents;
}

void BM_Baseline_QJsonDocumentToVariant(benchmark::State& state) {
  const Documents& docs = Docs();
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    QVariant result = docs.json.toVariant();
    benchmark::DoNotOptimize(result);
  }
  timer.RecordBaseline("toVariant");
  state.SetBytesProcessed(state.iterations() * docs.json_bytes);
}

void BM_VariantToQVariant(benchmark::State& state) {
  const Documents& docs = Docs();
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    QVariant result;
    QVariantUtil::VariantToQVariant(&docs.variant, &result);
    benchmark::DoNotOptimize(result);
  }
  timer.ReportRatio("toVariant");
  state.SetBytesProcessed(state.iterations() * docs.json_bytes);
}

void BM_Baseline_QJsonDocumentFromVariant(benchmark::State& state) {
  const Documents& docs = Docs();
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    QJsonDocument result = QJsonDocument::fromVariant(docs.qvariant);
    benchmark::DoNotOptimize(result);
  }
  timer.RecordBaseline("fromVariant");
  state.SetBytesProcessed(state.iterations() * docs.json_bytes);
}

void BM_QVariantToVariant(benchmark::State& state) {
  const Documents& docs = Docs();
  bench::LoopTimer timer(state);
  for (auto _ : state) {
    Variant result;
    QVariantUtil::QVariantToVariant(&docs.qvariant, &result);
    benchmark::DoNotOptimize(result);
  }
  timer.ReportRatio("fromVariant");
  state.SetBytesProcessed(state.iterations() * docs.json_bytes);
}

// The document is built before anything is timed, and must really be about 1 MB.
bool Prepare() {
  const Documents& docs = Docs();
  std::fprintf(stderr, "document: %lld bytes of compact JSON\n",
               static_cast<long long>(docs.json_bytes));
  return docs.json_bytes > 900 * 1000 && docs.json_bytes < 1200 * 1000 &&
         docs.qvariant.toMap().size() == kRooms;
}

}  // namespace

BENCHMARK(BM_Baseline_QJsonDocumentToVariant)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_VariantToQVariant)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Baseline_QJsonDocumentFromVariant)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_QVariantToVariant)->Unit(benchmark::kMillisecond)->UseRealTime();

int main(int argc, char** argv) {
  return bench::RunWithApplication(argc, argv, Prepare);
}
