#!/usr/bin/env python3
"""Hold the address types against Python's ipaddress.

Usage: address_arithmetic_test.py PRINT_ADDRESS_ARITHMETIC

Judges text, overlap, network and broadcast address of 100000 random pairs of
prefixes per family. Every run takes a fresh seed and prints it; IPAV_SEED and
IPAV_ROUNDS, the pairs per family, set both.
"""

import ipaddress
import os
import secrets
import subprocess
import sys


def address_of(digits):
    """The address whose bytes these hexadecimal digits are."""
    value = int(digits, 16)
    return ipaddress.IPv4Address(value) if len(digits) == 8 else ipaddress.IPv6Address(value)


def text_of(address):
    """As RFC 5952, section 5, recommends for IPv4-mapped addresses: with a dotted quad."""
    mapped = getattr(address, "ipv4_mapped", None)
    return str(address) if mapped is None else f"::ffff:{mapped}"


def network_of(address, length):
    return ipaddress.ip_network((int(address), length) if address.version == 4
                                else (address.packed, length), strict=False)


def judge(line, seen):
    """The faults in one line."""
    first_digits, first_length, first_text, second_digits, second_length, second_text, *answers = (
        line.split())
    first, second = address_of(first_digits), address_of(second_digits)
    first_length, second_length = int(first_length), int(second_length)
    networks = network_of(first, first_length), network_of(second, second_length)
    expected = [f"{text_of(first)}/{first_length}", f"{text_of(second)}/{second_length}",
                str(int(networks[0].overlaps(networks[1])))]
    if first.version == 4:
        expected += [str(int(first == networks[0].network_address)),
                     str(int(first == networks[0].broadcast_address))]
    else:
        expected += ["-", "-"]
    seen.add((first.version, "first", first_length))
    seen.add((first.version, "second", second_length))
    seen.add((first.version, "overlap", expected[2]))
    found = [first_text, second_text, *answers]
    return [] if found == expected else [f"{line}\n  expected {' '.join(expected)}"]


def main():
    seed = os.environ.get("IPAV_SEED", str(secrets.randbits(32)))
    pairs = int(os.environ.get("IPAV_ROUNDS", "100000"))
    print(f"IPAV_SEED={seed} IPAV_ROUNDS={pairs}")
    done = subprocess.run([sys.argv[1], seed, str(pairs)], capture_output=True, text=True,
                          check=True)
    lines = done.stdout.splitlines()
    seen = set()
    faults = [fault for line in lines for fault in judge(line, seen)]
    if len(lines) != 2 * pairs:
        faults.append(f"{len(lines)} lines, not {2 * pairs}")
    if pairs >= 10000:
        for version, full in ((4, 32), (6, 128)):
            wanted = {(version, which, length) for which in ("first", "second")
                      for length in range(full + 1)}
            wanted |= {(version, "overlap", answer) for answer in "01"}
            faults += [f"not met: {missing}" for missing in sorted(wanted - seen)]
    print("\n".join(faults[:20]))
    print(f"{len(lines)} pairs, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
