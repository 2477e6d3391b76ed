// Cost of merging OSPFv2 records into their table and of joining them with the L3 interfaces by
// name, without the calls to ConfD. Prints for both how the time grows with the number of records,
// as the exponent of the line through the medians in logarithmic scale, and how it compares with
// the plain loops over both tables. Every record passes, so that every pair is looked at.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "config.h"
#include "growth.h"
#include "validate_config.h"

namespace {

using ip_application::config_valid::Interface;
using ip_application::config_valid::L3Config;
using ip_application::config_valid::OspfIf;
using ip_application::config_valid::Ospfv2Config;
using ip_application::config_valid::ValidateConfig;

constexpr double kMaxExponent = 1.1;
constexpr int kPlainSize = 10000;  // records, and as many interfaces

// How names are ordered: without a seed as ConfD lists them, by key; with one at random.
using Seed = std::optional<uint32_t>;

Seed AnotherOrder(Seed seed) { return seed ? Seed(*seed + 1000) : seed; }

std::vector<int> Numbers(int size, Seed seed) {
  std::vector<int> numbers(static_cast<size_t>(size));
  for (int i = 0; i < size; ++i) numbers[static_cast<size_t>(i)] = i;
  if (seed) std::shuffle(numbers.begin(), numbers.end(), std::mt19937(*seed));
  return numbers;
}

std::string Name(int number) { return "l3 uplink-" + std::to_string(number); }

nettypes::IPv4AddrMask Address(int number) {
  return nettypes::IPv4AddrMask(0x0a000000u + static_cast<uint32_t>(number), 24);
}

// One record of one address for every interface.
std::vector<OspfIf> Records(int size, Seed seed) {
  std::vector<OspfIf> records;
  for (const int number : Numbers(size, seed)) {
    OspfIf record;
    record.process_id = 10;
    record.vrf_name = "global";
    record.intf_name = Name(number);
    record.addresses = {Address(number)};
    records.push_back(record);
  }
  return records;
}

void Fill(L3Config& table, int size, Seed seed) {
  for (const int number : Numbers(size, seed)) {
    Interface intf;
    intf.name = Name(number);
    intf.vrf_name = "global";
    intf.ipv4_addr_list = {Address(number)};
    table.MergeConfigAndInsert(intf);
  }
}

// The rule about records with a search from the front of the table.
void MergeByFrontSearch(std::list<std::shared_ptr<OspfIf>>& table, const OspfIf& record) {
  for (const std::shared_ptr<OspfIf>& known : table) {
    if (known->intf_name == record.intf_name && known->process_id == record.process_id &&
        known->vrf_name == record.vrf_name) {
      known->addresses.push_back(record.addresses.front());
      return;
    }
  }
  table.push_back(std::make_shared<OspfIf>(record));
}

// Whether every interface of a record's name has the record's VRF and its one address.
bool PlainJoin(const L3Config& l3, const Ospfv2Config& ospf) {
  for (const std::shared_ptr<OspfIf>& record : ospf.table_) {
    for (const Interface& intf : l3.interfaces_) {
      if (intf.name != record->intf_name) continue;
      if (intf.ipv4_addr_list != record->addresses || intf.vrf_name != record->vrf_name) {
        return false;
      }
    }
  }
  return true;
}

// Both rules of the plug-in, one join each.
bool BothChecks(const L3Config& l3, const Ospfv2Config& ospf) {
  ValidateConfig checker;
  return checker.ValidateOspfv2CrossIfL3(l3, ospf) && checker.ValidateOspfv2CrossIfL3Vrf(l3, ospf);
}

using Check = bool (*)(const L3Config&, const Ospfv2Config&);
using Seconds = std::function<double(int size, Seed seed)>;

template <typename Work>
double SecondsOf(const Work& work) {
  const double begin = bench::CpuSeconds();
  const bool right = work();
  const double seconds = bench::CpuSeconds() - begin;
  return right ? seconds : NAN;
}

double JoinSeconds(Check check, int size, Seed seed) {
  L3Config l3;
  Fill(l3, size, seed);
  Ospfv2Config ospf;
  for (OspfIf& record : Records(size, AnotherOrder(seed))) {
    ospf.table_.push_back(std::make_shared<OspfIf>(record));
  }
  return SecondsOf([&] { return check(l3, ospf); });
}

// Every record comes a second time with another address, as OSPF uses two of an interface.
double MergeSeconds(int size, Seed seed) {
  std::vector<OspfIf> records = Records(size / 2, seed);
  std::vector<OspfIf> again = Records(size / 2, AnotherOrder(seed));
  Ospfv2Config table;
  return SecondsOf([&] {
    for (OspfIf& record : records) table.MergeConfigAndInsert(record);
    for (OspfIf& record : again) table.MergeConfigAndInsert(record);
    return table.table_.size() == records.size() && table.table_.back()->addresses.size() == 2;
  });
}

double PlainMergeSeconds(int size, Seed seed) {
  const std::vector<OspfIf> records = Records(size / 2, seed);
  const std::vector<OspfIf> again = Records(size / 2, AnotherOrder(seed));
  std::list<std::shared_ptr<OspfIf>> table;
  return SecondsOf([&] {
    for (const OspfIf& record : records) MergeByFrontSearch(table, record);
    for (const OspfIf& record : again) MergeByFrontSearch(table, record);
    return table.size() == records.size() && table.back()->addresses.size() == 2;
  });
}

// NAN when a run gave a wrong result.
double Median(std::vector<double> runs) {
  if (std::any_of(runs.begin(), runs.end(), [](double run) { return std::isnan(run); })) return NAN;
  const auto middle = runs.begin() + static_cast<ptrdiff_t>(runs.size() / 2);
  std::nth_element(runs.begin(), middle, runs.end());
  return *middle;
}

double MedianOf(int repetitions, const Seconds& seconds, int size, bool shuffled = false) {
  std::vector<double> runs;
  for (int i = 0; i < repetitions; ++i) {
    runs.push_back(seconds(size, shuffled ? Seed(static_cast<uint32_t>(i)) : std::nullopt));
  }
  return Median(runs);
}

// Every round measures all sizes, so that what else the machine does meets all of them alike.
std::vector<bench::Measured> MeasureGrowth(const Seconds& seconds) {
  constexpr int kRounds = 31;
  const std::vector<int> sizes = {1000, 2000, 5000, kPlainSize};
  std::vector<std::vector<double>> runs(sizes.size());
  for (int round = 0; round < kRounds; ++round) {
    for (size_t i = 0; i < sizes.size(); ++i) {
      runs[i].push_back(seconds(sizes[i], std::nullopt));
    }
  }
  std::vector<bench::Measured> points;
  for (size_t i = 0; i < sizes.size(); ++i) points.push_back({sizes[i], Median(runs[i])});
  return points;
}

// Prints how `fast` grows and how long `plain` takes. Returns whether the growth is linear and
// every result was right.
bool Report(const char* work, const Seconds& fast, const Seconds& plain) {
  const std::vector<bench::Measured> points = MeasureGrowth(fast);
  printf("%s\n   records          time  per record\n", work);
  for (const bench::Measured& point : points) {
    printf("%10d  %9.3f ms  %7.0f ns\n", point.size, point.seconds * 1e3,
           point.seconds / point.size * 1e9);
  }
  const double exponent = bench::Exponent(points);
  printf("time grows with the number of records to the power of %.3f (at most %.1f)\n", exponent,
         kMaxExponent);
  const double fast_seconds = MedianOf(11, fast, kPlainSize);
  const double plain_seconds = MedianOf(3, plain, kPlainSize);
  printf("plain loops, %d records: %.1f ms, %.0f times as long\n", kPlainSize, plain_seconds * 1e3,
         plain_seconds / fast_seconds);
  const double shuffled_seconds = MedianOf(11, fast, kPlainSize, true);
  printf("in random order, %d records: %.1f ms, %.1f times as long\n\n", kPlainSize,
         shuffled_seconds * 1e3, shuffled_seconds / fast_seconds);
  return exponent <= kMaxExponent && !std::isnan(plain_seconds);
}

}  // namespace

// Exit status 1 when the growth is more than linear or a result is wrong.
int main() {
  bench::KeepFreedMemory();
  const bool merge_is_linear =
      Report("merging records, two for every interface", MergeSeconds, PlainMergeSeconds);
  const bool join_is_linear = Report(
      "address and VRF checks, as many interfaces as records",
      [](int size, Seed seed) { return JoinSeconds(BothChecks, size, seed); },
      [](int size, Seed seed) { return JoinSeconds(PlainJoin, size, seed); });
  return merge_is_linear && join_is_linear ? 0 : 1;
}
