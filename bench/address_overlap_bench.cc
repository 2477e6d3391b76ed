// Cost of the address checks of one table, whole as a validation point runs them, beside that of
// the plain nested loops on copies of the interfaces. Behind Google Benchmark's own report stands
// what the promises are made of: the ratios, how the time grows with the number of addresses, and
// what a fault in the last pair costs. Exit status 1 when one of them is not kept.
//
// Every repetition gets a new permutation of the addresses, so that the branch predictor cannot
// learn one by heart.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <map>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "config.h"
#include "growth.h"
#include "support/plain_overlap.h"
#include "validate_config.h"

namespace {

using ip_application::config_valid::Config;
using ip_application::config_valid::Interface;
using ip_application::config_valid::InterfaceType;
using ip_application::config_valid::ValidateConfig;

constexpr double kMaxExponent = 1.1;
constexpr double kMaxFaultCost = 2;
const std::vector<int> kGrowthSizes = {1000, 2000, 5000, 10000, 20000, 50000, 100000};

enum class Spread {
  kSubnets,  // hosts of consecutive /30 or /64 subnets, as a network is planned
  kRandom,   // single addresses anywhere
};

struct Ipv4 {
  static constexpr char kName[] = "IPv4";
  static auto& Addresses(Interface& intf) { return intf.ipv4_addr_list; }

  static nettypes::IPv4AddrMask Mask(Spread spread, uint32_t number, uint32_t host) {
    // The factor is odd, so that no two numbers give one address.
    if (spread == Spread::kRandom) return nettypes::IPv4AddrMask(number * 2654435761u, 32);
    return nettypes::IPv4AddrMask(0x0a000000u + 4 * number + host, 30);
  }

  static std::string Plain(const Config& cfg) {
    return tests::PlainVerdictIpv4(cfg, InterfaceType::L3);
  }
  static int Check(ValidateConfig& checker, const Config& cfg) {
    return checker.ValidateInterfaceIPv4(cfg, InterfaceType::L3);
  }
};

struct Ipv6 {
  static constexpr char kName[] = "IPv6";
  static auto& Addresses(Interface& intf) { return intf.ipv6_addr_list; }

  static nettypes::IPv6AddrMask Mask(Spread spread, uint32_t number, uint32_t host) {
    uint64_t high = 0x20010db800000000 + number;
    uint64_t low = host;
    if (spread == Spread::kRandom) {
      high = number * 0x9e3779b97f4a7c15;
      low = high * 0xbf58476d1ce4e5b9;
    }
    std::array<uint8_t, 16> bytes{};
    for (size_t i = 0; i < 8; ++i) {
      bytes[i] = static_cast<uint8_t>(high >> (56 - 8 * i));
      bytes[8 + i] = static_cast<uint8_t>(low >> (56 - 8 * i));
    }
    return nettypes::IPv6AddrMask(nettypes::IPv6Addr(bytes), spread == Spread::kRandom ? 128 : 64);
  }

  static std::string Plain(const Config& cfg) {
    return tests::PlainVerdictIpv6(cfg, InterfaceType::L3);
  }
  static int Check(ValidateConfig& checker, const Config& cfg) {
    return checker.ValidateInterfaceIPv6(cfg, InterfaceType::L3);
  }
};

struct Load {
  int interfaces;
  int addresses;  // of each interface
  Spread spread = Spread::kSubnets;
  bool fault = false;  // the last interface overlaps the one before it, and nothing else does
};

// L3 interfaces in the global VRF.
template <typename Family>
class Table {
 public:
  explicit Table(const Load& load)
      : load_(load), numbers_(static_cast<size_t>(load.interfaces * load.addresses)) {
    std::iota(numbers_.begin(), numbers_.end(), 1u);
    for (int i = 0; i < load.interfaces; ++i) {
      Interface intf;
      intf.name = "l3 uplink-" + std::to_string(i);
      intf.vrf_name = "global";
      Family::Addresses(intf).resize(static_cast<size_t>(load.addresses));
      config.l3_config_.interfaces_.push_back(intf);
    }
  }

  void Permute() {
    std::shuffle(numbers_.begin(), numbers_.end(), random_);
    auto number = numbers_.begin();
    for (Interface& intf : config.l3_config_.interfaces_) {
      for (auto& mask : Family::Addresses(intf)) mask = Family::Mask(load_.spread, *number++, 1);
    }
    if (!load_.fault) return;
    const uint32_t before_last =
        numbers_[numbers_.size() - 1 - static_cast<size_t>(load_.addresses)];
    Family::Addresses(config.l3_config_.interfaces_.back()).back() =
        Family::Mask(load_.spread, before_last, 2);
  }

  Config config;

 private:
  Load load_;
  std::vector<uint32_t> numbers_;
  std::mt19937 random_{7};
};

// One call on a new permutation per iteration; the permutation is not counted.
template <typename Family, typename Check>
void Measure(benchmark::State& state, const Load& load, const Check& check) {
  Table<Family> table(load);
  for ([[maybe_unused]] auto iteration : state) {
    table.Permute();
    const auto begin = std::chrono::steady_clock::now();
    const bool accepted = check(table.config);
    const auto end = std::chrono::steady_clock::now();
    if (accepted == load.fault) state.SkipWithError("wrong verdict");
    state.SetIterationTime(std::chrono::duration<double>(end - begin).count());
  }
}

std::string Name(const char* family, const char* what, const Load& load) {
  return std::string(family) + "/" + what + "/" + std::to_string(load.interfaces) + "x" +
         std::to_string(load.addresses) + (load.spread == Spread::kRandom ? "/random" : "") +
         (load.fault ? "/fault" : "");
}

// The repetition that the rest of the machine disturbed least: other machines on the same host can
// make this one half as fast for seconds.
constexpr char kFastest[] = "fastest";

double Fastest(const std::vector<double>& repetitions) {
  return *std::min_element(repetitions.begin(), repetitions.end());
}

template <typename Family>
void RegisterCheck(const Load& load) {
  const auto measure = [load](benchmark::State& state) {
    Measure<Family>(state, load, [](const Config& cfg) {
      ValidateConfig checker;
      return Family::Check(checker, cfg) == 0;
    });
  };
  benchmark::RegisterBenchmark(Name(Family::kName, "check", load).c_str(), measure)
      ->UseManualTime()
      ->Unit(benchmark::kMicrosecond)
      ->MinTime(0.05)
      ->Repetitions(15)
      ->ComputeStatistics(kFastest, Fastest);
}

template <typename Family>
void RegisterPlain(const Load& load) {
  const auto measure = [load](benchmark::State& state) {
    Measure<Family>(state, load,
                    [](const Config& cfg) { return Family::Plain(cfg) == "accepted"; });
  };
  benchmark::RegisterBenchmark(Name(Family::kName, "plain", load).c_str(), measure)
      ->UseManualTime()
      ->Unit(benchmark::kMicrosecond)
      ->Iterations(1)
      ->Repetitions(3)
      ->ComputeStatistics(kFastest, Fastest);
}

// Beside the report, keeps the fastest repetition of every benchmark.
class FastestKeeper : public benchmark::ConsoleReporter {
 public:
  FastestKeeper() : ConsoleReporter(OO_Tabular) {}

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      failed = failed || run.error_occurred;
      if (run.aggregate_name == kFastest) {
        microseconds[run.run_name.function_name] = run.GetAdjustedRealTime();
      }
    }
    ConsoleReporter::ReportRuns(runs);
  }

  std::map<std::string, double> microseconds;
  bool failed = false;
};

struct Promise {
  Load load;
  double ratio;  // 0: none
};

const Promise kRatios[] = {{{256, 1}, 80}, {{256, 16}, 150}, {{4096, 1}, 1000}, {{10000, 1}, 0}};
const Load kFault = {4096, 1, Spread::kSubnets, true};

const char* Kept(bool kept, bool& all_kept) {
  all_kept = all_kept && kept;
  return kept ? "" : "  MISSED";
}

bool PrintRatios(const char* family, const std::map<std::string, double>& microseconds) {
  bool all_kept = true;
  printf("\n%s  interfaces x addresses   plain loops     this check    ratio\n", family);
  for (const Promise& promise : kRatios) {
    const auto plain = microseconds.find(Name(family, "plain", promise.load));
    const auto check = microseconds.find(Name(family, "check", promise.load));
    if (plain == microseconds.end() || check == microseconds.end()) continue;
    const double ratio = plain->second / check->second;
    printf("%15d x %-10d %10.3f ms  %10.4f ms  %7.0f", promise.load.interfaces,
           promise.load.addresses, plain->second / 1e3, check->second / 1e3, ratio);
    if (promise.ratio > 0) {
      printf(" (at least %.0f)%s", promise.ratio, Kept(ratio >= promise.ratio, all_kept));
    }
    printf("\n");
  }
  return all_kept;
}

bool PrintGrowth(const char* family, Spread spread, const char* spread_name,
                 const std::map<std::string, double>& microseconds) {
  std::vector<bench::Measured> points;
  printf("%s  %s, ns per address:", family, spread_name);
  for (const int size : kGrowthSizes) {
    const auto check = microseconds.find(Name(family, "check", {size, 1, spread}));
    if (check == microseconds.end()) continue;
    points.push_back({size, check->second / 1e6});
    printf(" %d: %.0f", size, check->second * 1e3 / size);
  }
  printf("\n");
  if (points.size() < 2) return true;
  const double exponent = bench::Exponent(points);
  bool kept = true;
  printf("%s  %s, exponent of the growth: %.3f (at most %.1f)%s\n", family, spread_name, exponent,
         kMaxExponent, Kept(exponent <= kMaxExponent, kept));
  return kept;
}

bool PrintFaultCost(const char* family, const std::map<std::string, double>& microseconds) {
  const auto fault = microseconds.find(Name(family, "check", kFault));
  const auto accepted = microseconds.find(Name(family, "check", {kFault.interfaces, 1}));
  if (fault == microseconds.end() || accepted == microseconds.end()) return true;
  const double cost = fault->second / accepted->second;
  bool kept = true;
  printf("%s  fault in the last pair, %d x 1: %.2f times the accepting run (at most %.0f)%s\n",
         family, kFault.interfaces, cost, kMaxFaultCost, Kept(cost <= kMaxFaultCost, kept));
  return kept;
}

template <typename Family>
void RegisterFamily() {
  for (const Promise& promise : kRatios) {
    RegisterPlain<Family>(promise.load);
    if (promise.load.interfaces != 10000) RegisterCheck<Family>(promise.load);  // below
  }
  RegisterCheck<Family>(kFault);
  for (const Spread spread : {Spread::kSubnets, Spread::kRandom}) {
    for (const int size : kGrowthSizes) RegisterCheck<Family>({size, 1, spread});
  }
}

}  // namespace

int main(int argc, char** argv) {
  bench::KeepFreedMemory();
  // Repetitions of all sizes take turns, so that what else the machine does meets all of them
  // alike.
  std::vector<char*> arguments(argv, argv + argc);
  std::string interleaving = "--benchmark_enable_random_interleaving=true";
  arguments.insert(arguments.begin() + 1, interleaving.data());
  argc = static_cast<int>(arguments.size());
  argv = arguments.data();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  RegisterFamily<Ipv4>();
  RegisterFamily<Ipv6>();
  FastestKeeper fastest;
  benchmark::RunSpecifiedBenchmarks(&fastest);

  bool kept = !fastest.failed;
  for (const char* family : {Ipv4::kName, Ipv6::kName}) {
    kept = PrintRatios(family, fastest.microseconds) && kept;
    kept = PrintGrowth(family, Spread::kSubnets, "subnets", fastest.microseconds) && kept;
    kept = PrintGrowth(family, Spread::kRandom, "random addresses", fastest.microseconds) && kept;
    kept = PrintFaultCost(family, fastest.microseconds) && kept;
  }
  return kept ? 0 : 1;
}
