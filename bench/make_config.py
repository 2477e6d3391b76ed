#!/usr/bin/env python3
"""Print a device configuration of any size, for benchmarks and load tests.

The same options always give the same text. It is valid for the data model at
any size, and made to break no rule of the validation points but their two
limits: 256 L3 interfaces and 1000 routes, where an IPv6 route counts twice.

  interfaces   L3, named if-1, if-2, ...; on VLANs 1 to 4094, then again from 1
  loopbacks    named 1, 2, ..., one IPv4 address each, behind those of the L3
               interfaces
  addresses    the n-th IPv4 address is the first host of the n-th /30 of
               10.0.0.0/8, the n-th IPv6 address is ::1 of the n-th /64 of
               2001:db8::/32, n counted over all interfaces
  VRFs         interfaces and routes are dealt out to the global VRF and to
               vrf-1, vrf-2, ... in turn
  routes       to the /30 networks of 100.64.0.0/10 and the /64 networks of
               fd00::/32; the next hop is the second host of an interface's
               subnet, in the interface's VRF, and never its own address

Example: make_config.py --interfaces 256 --routes 1000 --format xml > full.xml
"""

import argparse
import ipaddress
import json
import sys
from xml.sax.saxutils import escape

# Module name, which JSON uses, and namespace, which XML uses.
NAMESPACES = {
    "velmor-config": "urn:velmor:yang:config",
    "velmor-ip-app": "urn:velmor:yang:ip-app",
    "velmor-internal": "urn:velmor:yang:internal",
    "velmor-static-route": "urn:velmor:yang:static-route",
    "KX-RTM-MIB": "urn:velmor:yang:KX-RTM-MIB",
}

INTERFACES_IPV4 = int(ipaddress.IPv4Address("10.0.0.0"))
INTERFACES_IPV6 = int(ipaddress.IPv6Address("2001:db8::"))
ROUTES_IPV4 = int(ipaddress.IPv4Address("100.64.0.0"))
ROUTES_IPV6 = int(ipaddress.IPv6Address("fd00::"))

# How many subnets the blocks above hold.
MAX_IPV4_ADDRESSES = 2 ** (30 - 8)
MAX_IPV6_ADDRESSES = 2 ** (64 - 32)
MAX_IPV4_ROUTES = 2 ** (30 - 10)
MAX_IPV6_ROUTES = 2 ** (64 - 32)
MAX_VLAN = 4094


def ipv4_host(n, host):
    """Address number `host` of the n-th interface subnet, as an integer."""
    return INTERFACES_IPV4 + 4 * n + host


def ipv6_host(n, host):
    return INTERFACES_IPV6 + (n << 64) + host


def ipv4_text(value):
    return f"{value >> 24}.{value >> 16 & 255}.{value >> 8 & 255}.{value & 255}"


def ipv6_text(value):
    return str(ipaddress.IPv6Address(value))


def hex_list(value, octets):
    """Octets as the route tables spell them: 10.0.0.1 is 0a:00:00:01."""
    return value.to_bytes(octets, "big").hex(":")


def vrf_index(interface, options):
    """0 is the global VRF."""
    return interface % (options.vrfs + 1)


def make_interface(i, options):
    per_ipv4 = options.addresses_per_interface
    per_ipv6 = options.ipv6_addresses_per_interface
    interface = {"name": f"if-{i + 1}"}
    if vrf_index(i, options) > 0:
        interface["vrf"] = f"vrf-{vrf_index(i, options)}"
    interface["lower-layer-if"] = {"vlan": i % MAX_VLAN + 1}
    ipv4 = [ipv4_text(ipv4_host(i * per_ipv4 + k, 1)) + "/30" for k in range(per_ipv4)]
    if ipv4:
        interface["ipv4"] = {"address": {"ip": ipv4[0]}}
    if len(ipv4) > 1:
        interface["ipv4"]["address"]["secondary"] = [{"ip": text} for text in ipv4[1:]]
    if per_ipv6 > 0:
        interface["ipv6"] = {"address": [
            {"ip": ipv6_text(ipv6_host(i * per_ipv6 + k, 1)) + "/64"} for k in range(per_ipv6)]}
    return interface


def make_loopback(i, options):
    subnet = options.interfaces * options.addresses_per_interface + i
    return {"name": str(i + 1),
            "ipv4": {"address": [{"ip": ipv4_text(ipv4_host(subnet, 1)) + "/30"}]}}


def make_route(r, ipv6, options):
    """The r-th route of a family: (table entry, name of its interface)."""
    interface = r % max(options.interfaces, 1)
    per_interface = (options.ipv6_addresses_per_interface if ipv6
                     else options.addresses_per_interface)
    subnet = interface * max(per_interface, 1)
    if ipv6:
        kind, network, length = "ipv6", hex_list(ROUTES_IPV6 + (r << 64), 16), 64
        next_hop = hex_list(ipv6_host(subnet, 2), 16)
    else:
        kind, network, length = "ipv4", hex_list(ROUTES_IPV4 + 4 * r, 4), 30
        next_hop = hex_list(ipv4_host(subnet, 2), 4)
    entry = {
        "rtmStaticRtFteIndex": vrf_index(interface, options),
        "rtmStaticRtNetworkAddrType": kind,
        "rtmStaticRtNetworkAddr": network,
        "rtmStaticRtNetworkPrefixLen": length,
        "rtmStaticRtNextHopAddrType": kind,
        "rtmStaticRtNextHopAddr": next_hop,
    }
    return entry, f"if-{interface + 1}"


def make_output_interface(entry, interface):
    return {
        "fte-index": entry["rtmStaticRtFteIndex"],
        "network": entry["rtmStaticRtNetworkAddr"],
        "prefix-length": entry["rtmStaticRtNetworkPrefixLen"],
        "next-hop": entry["rtmStaticRtNextHopAddr"],
        "interface-name": f"l3-{interface}",
    }


def make_config(options):
    """The configuration as nested dictionaries, with the member names of its JSON form."""
    config = {}
    interfaces = {}
    if options.interfaces > 0:
        interfaces["velmor-ip-app:l3"] = [
            make_interface(i, options) for i in range(options.interfaces)]
    if options.loopbacks > 0:
        interfaces["velmor-ip-app:loopback"] = [
            make_loopback(i, options) for i in range(options.loopbacks)]
    if interfaces:
        config["velmor-config:config"] = {"interface": interfaces}
    if options.vrfs > 0:
        names = [{"index": v, "vname": f"vrf-{v}"} for v in range(1, options.vrfs + 1)]
        config["velmor-internal:internal"] = {"vrf-config": {"indexTOstring": names}}
    routes = [make_route(r, False, options) for r in range(options.routes)]
    routes += [make_route(r, True, options) for r in range(options.ipv6_routes)]
    if routes:
        entries = [entry for entry, _ in routes]
        config["KX-RTM-MIB:KX-RTM-MIB"] = {"rtmStaticRtTable": {"rtmStaticRtEntry": entries}}
    if routes and options.output_interfaces:
        config["velmor-static-route:rtmStaticRtEntry-global"] = [
            make_output_interface(entry, interface) for entry, interface in routes]
    return config


def write_xml(write, name, value, indent):
    """One element, or all entries of a list, each on lines of its own."""
    if isinstance(value, list):
        for entry in value:
            write_xml(write, name, entry, indent)
        return
    module, _, tag = name.rpartition(":")
    start = f'{tag} xmlns="{NAMESPACES[module]}"' if module else tag
    if not isinstance(value, dict):
        write(f"{indent}<{start}>{escape(str(value))}</{tag}>\n")
        return
    write(f"{indent}<{start}>\n")
    for child, child_value in value.items():
        write_xml(write, child, child_value, indent + "  ")
    write(f"{indent}</{tag}>\n")


def write_json(write, value, indent):
    """Nested like the data, but a list entry that holds only leaves stays on one line."""
    inner = indent + "  "
    if isinstance(value, dict) and any(isinstance(v, (dict, list)) for v in value.values()):
        separator = "{\n"
        for name, child in value.items():
            write(f'{separator}{inner}"{name}": ')
            write_json(write, child, inner)
            separator = ",\n"
        write(f"\n{indent}}}")
    elif isinstance(value, list):
        separator = "[\n"
        for entry in value:
            write(separator + inner)
            write_json(write, entry, inner)
            separator = ",\n"
        write(f"\n{indent}]")
    else:
        write(json.dumps(value))


def count(text):
    value = int(text)
    if value < 0:
        raise argparse.ArgumentTypeError(f"{text} is negative")
    return value


def parse_options(arguments):
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    add = parser.add_argument
    add("--interfaces", type=count, default=0, metavar="N", help="L3 interfaces")
    add("--loopbacks", type=count, default=0, metavar="N", help="loopback interfaces")
    add("--addresses-per-interface", type=count, default=1, metavar="K",
        help="IPv4 addresses of each interface, the first one primary (default 1)")
    add("--ipv6-addresses-per-interface", type=count, default=0, metavar="K",
        help="IPv6 addresses of each interface (default 0)")
    add("--routes", type=count, default=0, metavar="N", help="IPv4 static routes with next hop")
    add("--ipv6-routes", type=count, default=0, metavar="N", help="IPv6 static routes with next hop")
    add("--output-interfaces", action="store_true", help="name the output interface of every route")
    add("--vrfs", type=count, default=0, metavar="N", help="VRFs besides the global one")
    add("--format", choices=("xml", "json"), default="json", help="default json")
    options = parser.parse_args(arguments)

    for what, wanted, most in (
            ("IPv4 addresses",
             options.interfaces * options.addresses_per_interface + options.loopbacks,
             MAX_IPV4_ADDRESSES),
            ("IPv6 addresses", options.interfaces * options.ipv6_addresses_per_interface,
             MAX_IPV6_ADDRESSES),
            ("IPv4 routes", options.routes, MAX_IPV4_ROUTES),
            ("IPv6 routes", options.ipv6_routes, MAX_IPV6_ROUTES)):
        if wanted > most:
            parser.error(f"at most {most} {what}, {wanted} wanted")
    return options


def main(arguments):
    options = parse_options(arguments)
    config = make_config(options)
    write = sys.stdout.write
    if options.format == "json":
        write_json(write, config, "")
        write("\n")
        return
    for name, value in config.items():
        write_xml(write, name, value, "")


if __name__ == "__main__":
    try:
        main(sys.argv[1:])
    except BrokenPipeError:  # the reader, such as head, has seen enough
        sys.stderr.close()
