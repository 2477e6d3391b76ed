// Prints what the address types make of random pairs of prefixes, for someone else to judge.
//
//   print_address_arithmetic SEED PAIRS
//
// One line for each pair, first PAIRS of IPv4 and then of IPv6:
//
//   <address> <length> <text> <address> <length> <text> <overlap> <network> <broadcast>
//
// An address is its bytes in hexadecimal, a text is what to_string() gives, and the last three are
// 0 or 1: whether the two overlap, and whether the first is the network or broadcast address of its
// prefix ("-" for IPv6). The second address agrees with the first in a random number of leading
// bits, so that pairs just inside and just outside a prefix are as frequent as any.
#include <array>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>

#include "nettypes/ipv4.h"
#include "nettypes/ipv6.h"

namespace {

using Bytes = std::array<uint8_t, 16>;

struct Pair {
  Bytes first{};
  Bytes second{};
  uint8_t first_length = 0;
  uint8_t second_length = 0;
};

// Of the bytes, the first `size` are used.
Pair DrawPair(std::mt19937_64& random, size_t size) {
  const auto bits = static_cast<uint64_t>(size * 8);
  Pair pair;
  for (size_t i = 0; i < size; ++i) pair.first[i] = static_cast<uint8_t>(random());
  if (random() % 2 == 0) {  // with groups of zeros, and of ones, for the shortened texts
    for (size_t i = 0; i + 1 < size; i += 2) {
      const uint64_t kind = random() % 4;
      if (kind >= 2) continue;
      pair.first[i] = pair.first[i + 1] = kind == 0 ? 0x00 : 0xff;
    }
  }
  if (size == 16 && random() % 16 == 0) {  // IPv4-mapped
    for (size_t i = 0; i < 12; ++i) pair.first[i] = i < 10 ? 0x00 : 0xff;
  }
  pair.first_length = static_cast<uint8_t>(random() % (bits + 1));
  pair.second_length = static_cast<uint8_t>(random() % (bits + 1));
  if (random() % 4 == 0) {  // host bits all zero or all one, up to the last bit
    const bool ones = random() % 2 == 0;
    for (size_t bit = pair.first_length; bit < bits - random() % 2; ++bit) {
      const auto mask = static_cast<uint8_t>(0x80 >> bit % 8);
      pair.first[bit / 8] =
          static_cast<uint8_t>(ones ? pair.first[bit / 8] | mask : pair.first[bit / 8] & ~mask);
    }
  }
  pair.second = pair.first;
  const uint64_t common = random() % (bits + 1);
  for (uint64_t bit = common; bit < bits; ++bit) {
    if (bit == common || random() % 2 == 0) {
      pair.second[bit / 8] = static_cast<uint8_t>(pair.second[bit / 8] ^ 0x80 >> bit % 8);
    }
  }
  return pair;
}

std::string Hex(const Bytes& bytes, size_t size) {
  std::string text;
  for (size_t i = 0; i < size; ++i) {
    text += "0123456789abcdef"[bytes[i] >> 4];
    text += "0123456789abcdef"[bytes[i] & 15];
  }
  return text;
}

template <typename AddrMask>
void Print(const Pair& pair, size_t size, const AddrMask& first, const AddrMask& second,
           const char* network, const char* broadcast) {
  printf("%s %u %s %s %u %s %d %s %s\n", Hex(pair.first, size).c_str(), first.prefix_len(),
         first.to_string().c_str(), Hex(pair.second, size).c_str(), second.prefix_len(),
         second.to_string().c_str(), first.Overlap(second) ? 1 : 0, network, broadcast);
}

nettypes::IPv4AddrMask Ipv4Mask(const Bytes& bytes, uint8_t length) {
  uint32_t addr = 0;
  for (size_t i = 0; i < 4; ++i) addr = addr << 8 | bytes[i];
  return nettypes::IPv4AddrMask(addr, length);
}

nettypes::IPv6AddrMask Ipv6Mask(const Bytes& bytes, uint8_t length) {
  return nettypes::IPv6AddrMask(nettypes::IPv6Addr(bytes), length);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    fputs("usage: print_address_arithmetic SEED PAIRS\n", stderr);
    return 2;
  }
  std::mt19937_64 random(std::stoull(argv[1]));
  const uint64_t pairs = std::stoull(argv[2]);
  for (uint64_t i = 0; i < pairs; ++i) {
    const Pair pair = DrawPair(random, 4);
    const nettypes::IPv4AddrMask first = Ipv4Mask(pair.first, pair.first_length);
    Print(pair, 4, first, Ipv4Mask(pair.second, pair.second_length),
          first.IsNetworkAddr() ? "1" : "0", first.IsBroadcastAddr() ? "1" : "0");
  }
  for (uint64_t i = 0; i < pairs; ++i) {
    const Pair pair = DrawPair(random, 16);
    Print(pair, 16, Ipv6Mask(pair.first, pair.first_length),
          Ipv6Mask(pair.second, pair.second_length), "-", "-");
  }
  return 0;
}
