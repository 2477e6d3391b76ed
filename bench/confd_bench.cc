// Costs of the calls that the plug-in makes most: reads of one element, steps of a cursor, the walk
// over the changes of a transaction. Sizes are numbers of interfaces and of routes; the legal
// limits are far below them.

#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "confd/transaction.h"
#include "confd_maapi.h"
#include "store/diff.h"
#include "store/snapshot.h"
#include "support/data_model.h"

namespace {

std::string Octets(int64_t number) {
  char text[16];
  snprintf(text, sizeof(text), "0a:%02x:%02x:%02x", static_cast<unsigned>(number >> 16 & 255),
           static_cast<unsigned>(number >> 8 & 255), static_cast<unsigned>(number & 255));
  return text;
}

std::string Address(int64_t number) {
  return "10." + std::to_string(number >> 16 & 255) + "." + std::to_string(number >> 8 & 255) +
         "." + std::to_string(number & 255);
}

enum class Tables { kAll, kNested };

// As many L3 interfaces as routes in each of the two route tables. `interval` goes to the interface
// in the middle. kNested leaves out the table that is a list at the top of the model: libyang needs
// quadratic time to build one.
std::string ConfigurationText(int64_t size, int interval, Tables tables) {
  std::string interfaces;
  std::string routes;
  std::string outputs;
  for (int64_t i = 0; i < size; ++i) {
    const std::string comma = i > 0 ? "," : "";
    const std::string number = std::to_string(i);
    const int max_interval = i == size / 2 ? interval : 600;
    interfaces += comma + R"({"name":")" + number + R"(","lower-layer-if":{"vlan":)" +
                  std::to_string(1 + i % 4094) + R"(},"ipv4":{"address":{"ip":")" + Address(i) +
                  R"(/24"}},"ipv6":{"nd":{"ra":{"max-interval":)" + std::to_string(max_interval) +
                  "}}}}";
    routes += comma + R"({"rtmStaticRtFteIndex":5,"rtmStaticRtNetworkAddrType":"ipv4",)" +
              R"("rtmStaticRtNetworkAddr":")" + Octets(i) +
              R"(","rtmStaticRtNetworkPrefixLen":32,"rtmStaticRtNextHopAddrType":"ipv4",)" +
              R"("rtmStaticRtNextHopAddr":"0a:00:00:01"})";
    outputs += comma + R"({"fte-index":5,"network":")" + Octets(i) +
               R"(","prefix-length":32,"next-hop":"0a:00:00:01","interface-name":"l3-)" + number +
               R"("})";
  }
  return R"({"velmor-config:config":{"interface":{"velmor-ip-app:l3":[)" + interfaces +
         R"(]}},"KX-RTM-MIB:KX-RTM-MIB":{"rtmStaticRtTable":{"rtmStaticRtEntry":[)" + routes +
         "]}}" +
         (tables == Tables::kAll
              ? R"(,"velmor-static-route:rtmStaticRtEntry-global":[)" + outputs + "]"
              : "") +
         "}";
}

std::shared_ptr<const store::Snapshot> Configuration(int64_t size, int interval, Tables tables) {
  return store::Snapshot::FromText(tests::DataModel(), ConfigurationText(size, interval, tables));
}

// A transaction over a configuration of `size` interfaces and routes, read in a random order.
class Transaction {
 public:
  explicit Transaction(int64_t size)
      : store_(store::Snapshot::Empty(tests::DataModel())),
        thandle_(store_.StartTransaction(Configuration(size, 600, Tables::kAll))),
        sock_(store_.OpenSocket()) {
    store_.Attach(sock_, thandle_);
    std::mt19937 random(1);
    for (int i = 0; i < 4096; ++i) {
      numbers_.push_back(std::to_string(random() % static_cast<uint64_t>(size)));
      routes_.push_back(Octets(std::stol(numbers_.back())));
    }
  }

  int sock() const { return sock_; }
  int thandle() const { return thandle_; }
  const char* NextInterface() { return numbers_[++next_ % numbers_.size()].c_str(); }
  const char* NextRoute() { return routes_[++next_ % routes_.size()].c_str(); }

 private:
  confd::Database store_;
  int thandle_;
  int sock_;
  std::vector<std::string> numbers_;
  std::vector<std::string> routes_;
  size_t next_ = 0;
};

constexpr int64_t kEntries = 10000;

void BM_ReadNumber(benchmark::State& state) {
  Transaction transaction(kEntries);
  uint16_t interval = 0;
  for (auto _ : state) {
    if (maapi_get_u_int16_elem(transaction.sock(), transaction.thandle(), &interval,
                               "/config/interface/l3{%s}/ipv6/nd/ra/max-interval",
                               transaction.NextInterface()) != CONFD_OK) {
      state.SkipWithError(confd_lasterr());
    }
  }
}
BENCHMARK(BM_ReadNumber);

void BM_Exists(benchmark::State& state) {
  Transaction transaction(kEntries);
  for (auto _ : state) {
    if (maapi_exists(transaction.sock(), transaction.thandle(),
                     "/config/interface/ipapp:l3{%s}/lower-layer-if/vlan",
                     transaction.NextInterface()) != 1) {
      state.SkipWithError(confd_lasterr());
    }
  }
}
BENCHMARK(BM_Exists);

void BM_ReadAddress(benchmark::State& state) {
  Transaction transaction(kEntries);
  confd_ipv4_prefix address;
  for (auto _ : state) {
    if (maapi_get_ipv4_and_plen_elem(transaction.sock(), transaction.thandle(), &address,
                                     "/config/interface/l3{%s}/ipv4/address/ip",
                                     transaction.NextInterface()) != CONFD_OK) {
      state.SkipWithError(confd_lasterr());
    }
  }
}
BENCHMARK(BM_ReadAddress);

// Four keys, two of them octets, in a list at the top of the model.
void BM_ReadTextOfRoute(benchmark::State& state) {
  Transaction transaction(kEntries);
  confd_value_t value;
  for (auto _ : state) {
    if (maapi_get_elem(transaction.sock(), transaction.thandle(), &value,
                       "/rtmStaticRtEntry-global{ %u %s %d %s }/interface-name", 5u,
                       transaction.NextRoute(), 32, "0a:00:00:01") != CONFD_OK) {
      state.SkipWithError(confd_lasterr());
    }
    confd_free_value(&value);
  }
}
BENCHMARK(BM_ReadTextOfRoute);

// One walk; a step is the time per item.
void BM_CursorWalk(benchmark::State& state, const char* list) {
  Transaction transaction(kEntries);
  int64_t steps = 0;
  for (auto _ : state) {
    maapi_cursor cursor;
    maapi_init_cursor(transaction.sock(), transaction.thandle(), &cursor, "%s", list);
    while (maapi_get_next(&cursor) == CONFD_OK && cursor.n != 0) ++steps;
    maapi_destroy_cursor(&cursor);
  }
  state.SetItemsProcessed(steps);
}
BENCHMARK_CAPTURE(BM_CursorWalk, Interfaces, "/config/interface/l3")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_CursorWalk, Routes, "/KX-RTM-MIB/rtmStaticRtTable/rtmStaticRtEntry")
    ->Unit(benchmark::kMillisecond);

int CountChanges(const store::Snapshot& running, const store::Snapshot& candidate) {
  int changes = 0;
  store::VisitChanges(running, candidate, [&changes](const store::Change&) {
    ++changes;
    return store::VisitResult::kRecurse;
  });
  return changes;
}

// One leaf of one interface changed, and neither snapshot was ever read: the indexes are built too.
void BM_DiffFresh(benchmark::State& state, Tables tables) {
  const std::string running_text = ConfigurationText(state.range(0), 600, tables);
  const std::string candidate_text = ConfigurationText(state.range(0), 601, tables);
  for (auto _ : state) {
    state.PauseTiming();
    auto running = store::Snapshot::FromText(tests::DataModel(), running_text);
    auto candidate = store::Snapshot::FromText(tests::DataModel(), candidate_text);
    state.ResumeTiming();
    if (CountChanges(*running, *candidate) != 2) state.SkipWithError("other changes");
    state.PauseTiming();
    running.reset();
    candidate.reset();
    state.ResumeTiming();
  }
  state.SetComplexityN(state.range(0));
}

void BM_DiffWarm(benchmark::State& state, Tables tables) {
  const auto running = Configuration(state.range(0), 600, tables);
  const auto candidate = Configuration(state.range(0), 601, tables);
  CountChanges(*running, *candidate);
  for (auto _ : state) {
    if (CountChanges(*running, *candidate) != 2) state.SkipWithError("other changes");
  }
  state.SetComplexityN(state.range(0));
}

// Every interface and route is new.
void BM_DiffFromEmpty(benchmark::State& state, Tables tables) {
  const auto running = store::Snapshot::Empty(tests::DataModel());
  const auto candidate = Configuration(state.range(0), 600, tables);
  int changes = 0;
  for (auto _ : state) changes = CountChanges(*running, *candidate);
  state.counters["changes"] = changes;
  state.SetComplexityN(state.range(0));
}

void AllSizes(benchmark::internal::Benchmark* bench) {
  for (const int64_t size : {1000, 2000, 5000, 10000}) bench->Arg(size);
  bench->Unit(benchmark::kMillisecond)->Complexity(benchmark::oN);
}
void NestedSizes(benchmark::internal::Benchmark* bench) {
  for (const int64_t size : {1000, 10000, 100000}) bench->Arg(size);
  bench->Unit(benchmark::kMillisecond)->Complexity(benchmark::oN);
}
BENCHMARK_CAPTURE(BM_DiffFresh, All, Tables::kAll)->Apply(AllSizes)->Iterations(3);
BENCHMARK_CAPTURE(BM_DiffFresh, Nested, Tables::kNested)->Apply(NestedSizes)->Iterations(3);
BENCHMARK_CAPTURE(BM_DiffWarm, All, Tables::kAll)->Apply(AllSizes);
BENCHMARK_CAPTURE(BM_DiffWarm, Nested, Tables::kNested)->Apply(NestedSizes);
BENCHMARK_CAPTURE(BM_DiffFromEmpty, Nested, Tables::kNested)->Apply(NestedSizes);

}  // namespace

BENCHMARK_MAIN();
