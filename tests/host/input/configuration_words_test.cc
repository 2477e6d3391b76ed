// Mistakes that people make in a configuration, and the line that tells them what is wrong and what
// the right form is.
#include <gtest/gtest.h>

#include <string>

#include "configuration_text.h"

namespace {

const std::string kConfigOpen = "<config xmlns=\"urn:velmor:yang:config\">\n<interface>\n";
const std::string kConfigClose = "</interface>\n</config>\n";

std::string JsonRoute(const std::string& members) {
  return "{\"KX-RTM-MIB:KX-RTM-MIB\": {\"rtmStaticRtTable\": {\"rtmStaticRtEntry\": [{\n" +
         members + "}]}}}";
}

std::string XmlRoute(const std::string& leaves) {
  return "<KX-RTM-MIB xmlns=\"urn:velmor:yang:KX-RTM-MIB\"><rtmStaticRtTable><rtmStaticRtEntry>\n" +
         leaves + "</rtmStaticRtEntry></rtmStaticRtTable></KX-RTM-MIB>";
}

const std::string kL3Children =
    ", which holds \"name\", \"vrf\", \"lower-layer-if\", \"ipv4\", \"ipv6\"";
const std::string kPlen4 = ": Not an IPv4 address with prefix length, such as 192.0.2.1/24.";
const std::string kPlen6 = ": Not an IPv6 address with prefix length, such as 2001:db8::1/64.";
const std::string kOctets =
    ": Not octets as two hex digits each, joined by ':', such as 0a:00:00:00.";
const std::string kVlan =
    ", but takes a whole number from 1 to 4094: A VLAN identifier is 1 to 4094.";

const TextErrorCase kNames[] = {
    {"JsonWithoutModule",
     "{\"velmor-config:config\": {\"interface\": {\n\"l3\": [{\"name\": \"7\"}]}}}",
     "input:2: \"l3\" is written \"velmor-ip-app:l3\" here"},
    {"JsonPrefixInsteadOfModule",
     "{\"velmor-config:config\": {\"interface\": {\n\"ipapp:l3\": [{\"name\": \"7\"}]}}}",
     "input:2: \"ipapp:l3\" is written \"velmor-ip-app:l3\" here"},
    {"JsonTopWithoutModule", "{\n\"config\": {}}",
     "input:2: \"config\" is written \"velmor-config:config\" here"},
    {"JsonOtherModule", JsonWithL3("\"name\": \"7\", \"velmor-config:vrf\": \"red\""),
     "input:4: \"velmor-config:vrf\" is written \"velmor-ip-app:vrf\" here"},
    {"JsonUnknown", JsonWithL3("\"name\": \"7\",\n\"colour\": 1"),
     "input:5: \"colour\" is not known in \"l3\"" + kL3Children},
    {"JsonUnknownModule", "{\n\"velmor:config\": {}, \"x:y\": 1}",
     "input:2: \"velmor:config\" is written \"velmor-config:config\" here"},
    {"JsonUnknownModuleAndName", "{\n\"x:y\": 1}",
     "input:2: \"x:y\": no module of the data model has the name \"x\""},
    {"XmlListWithoutNamespace", kConfigOpen + "<l3><name>7</name></l3>\n" + kConfigClose,
     "input:3: <l3> is written <l3 xmlns=\"urn:velmor:yang:ip-app\"> here, or with a prefix of that namespace"},
    {"XmlListInWrongNamespace",
     kConfigOpen + "<l3 xmlns=\"urn:velmor:ip-app\"><name>7</name></l3>\n" + kConfigClose,
     "input:3: <l3> is written <l3 xmlns=\"urn:velmor:yang:ip-app\"> here, or with a prefix of that namespace"},
    {"XmlConfigWithoutNamespace", "\n<config>\n<interface/>\n</config>",
     "input:2: <config> without a namespace is that of NETCONF; that of the data model is <config "
     "xmlns=\"urn:velmor:yang:config\">"},
    {"XmlOtherTopWithoutNamespace", "\n<internal/>",
     "input:2: <internal> is written <internal xmlns=\"urn:velmor:yang:internal\"> here, or with a prefix of that namespace"},
    {"XmlUnknown", XmlWithL3("<name>7</name>\n<ipv5/>"),
     "input:5: <ipv5> is not known in <l3>, which holds <name>, <vrf>, <lower-layer-if>, <ipv4>, "
     "<ipv6>; did you mean <ipv4>?"},
    {"XmlWrongCase", XmlWithL3("<Name>7</Name>"),
     "input:4: <Name> is not known in <l3>, which holds <name>, <vrf>, <lower-layer-if>, <ipv4>, "
     "<ipv6>; did you mean <name>?"},
    {"XmlEndTagForgotten", XmlWithL3("<name>7</name><vrf>red\n<ipv4/>"),
     "input:5: <ipv4> stands in <vrf>, which has a value and nothing else; is </vrf> missing?"},
    {"JsonQuoteForgotten", JsonWithL3("\"name\": \"7\",\n\"vrf: \"red\""),
     "input:5: a colon is expected before red"},
};

const TextErrorCase kValues[] = {
    {"JsonNumberInQuotes", JsonWithL3("\"name\": \"7\", \"lower-layer-if\": {\n\"vlan\": \"20\"}"),
     "input:5: \"vlan\" is \"20\", but takes a whole number from 1 to 4094, without quotes"},
    {"JsonNull", JsonWithL3("\"name\": \"7\",\n\"vrf\": null"),
     "input:5: \"vrf\" is null; leave the member out, or give it a value"},
    {"JsonTextWithoutQuotes", JsonWithL3("\"name\":\n7"),
     "input:5: \"name\" is 7, but takes a text, in quotes"},
    {"JsonTrue", JsonWithL3("\"name\": \"7\",\n\"vrf\": true"),
     "input:5: \"vrf\" is true, but takes a text, in quotes"},
    {"JsonBelowRange", JsonWithL3("\"name\": \"7\", \"lower-layer-if\": {\n\"vlan\": 0}"),
     "input:5: \"vlan\" is 0" + kVlan},
    {"JsonAboveRange", JsonWithL3("\"name\": \"7\", \"lower-layer-if\": {\n\"vlan\": 4095}"),
     "input:5: \"vlan\" is 4095" + kVlan},
    {"JsonFraction", JsonWithL3("\"name\": \"7\", \"lower-layer-if\": {\n\"vlan\": 1.5}"),
     "input:5: \"vlan\" is 1.5" + kVlan},
    {"XmlAboveRange",
     XmlWithL3("<name>7</name><lower-layer-if>\n<vlan>4095</vlan>\n</lower-layer-if>"),
     "input:5: <vlan> is \"4095\"" + kVlan},
    {"XmlNoNumber", XmlWithL3("<name>7</name><lower-layer-if>\n<vlan/>\n</lower-layer-if>"),
     "input:5: <vlan> is \"\"" + kVlan},
    {"JsonAboveWidth",
     JsonWithL3("\"name\": \"7\", \"ipv6\": {\"nd\": {\"ra\": {\n\"lifetime\": 65536}}}"),
     "input:5: \"lifetime\" is 65536, but takes a whole number from 0 to 65535"},
    {"JsonWrongWord",
     JsonRoute("\"rtmStaticRtFteIndex\": 1,\n\"rtmStaticRtNetworkAddrType\": \"ip\""),
     "input:3: \"rtmStaticRtNetworkAddrType\" is \"ip\", but takes ipv4 or ipv6"},
    {"XmlWrongWord", XmlRoute("<rtmStaticRtNetworkAddrType>1</rtmStaticRtNetworkAddrType>"),
     "input:2: <rtmStaticRtNetworkAddrType> is \"1\", but takes ipv4 or ipv6"},
    {"JsonNoLength",
     JsonWithL3("\"name\": \"7\", \"ipv4\": {\"address\": {\n\"ip\": \"192.0.2.1\"}}"),
     "input:5: \"ip\" is \"192.0.2.1\"" + kPlen4 +
         " 192.0.2.1 lacks its length, such as 192.0.2.1/24."},
    {"XmlNoLength", XmlWithL3("<name>7</name><ipv4><address><ip>192.0.2.1</ip></address></ipv4>"),
     "input:4: <ip> is \"192.0.2.1\"" + kPlen4 +
         " 192.0.2.1 lacks its length, such as 192.0.2.1/24."},
    {"JsonNoIpv6Length",
     JsonWithL3("\"name\": \"7\", \"ipv6\": {\"address\": [{\n\"ip\": \"fd00::1\"}]}"),
     "input:5: \"ip\" is \"fd00::1\"" + kPlen6 + " fd00::1 lacks its length, such as fd00::1/64."},
    {"JsonMask",
     JsonWithL3(
         "\"name\": \"7\", \"ipv4\": {\"address\": {\n\"ip\": \"192.0.2.1/255.255.255.0\"}}"),
     "input:5: \"ip\" is \"192.0.2.1/255.255.255.0\"" + kPlen4 +
         " 192.0.2.1/255.255.255.0 is written 192.0.2.1/24 here."},
    {"JsonLeadingZero",
     JsonWithL3("\"name\": \"7\", \"ipv4\": {\"address\": {\n\"ip\": \"192.0.2.1/024\"}}"),
     "input:5: \"ip\" is \"192.0.2.1/024\"" + kPlen4 +
         " 192.0.2.1/024 is written 192.0.2.1/24 here."},
    {"XmlLeadingZero",
     XmlWithL3("<name>7</name><ipv6><address>\n<ip>::1/0128</ip></address></ipv6>"),
     "input:5: <ip> is \"::1/0128\"" + kPlen6 + " ::1/0128 is written ::1/128 here."},
    {"JsonMaskBehindBlank",
     JsonWithL3(
         "\"name\": \"7\", \"ipv4\": {\"address\": {\n\"ip\": \"192.0.2.1 255.255.255.0\"}}"),
     "input:5: \"ip\" is \"192.0.2.1 255.255.255.0\"" + kPlen4 +
         " 192.0.2.1 255.255.255.0 is written 192.0.2.1/24 here."},
    {"XmlBlanksAround",
     XmlWithL3("<name>7</name><ipv4><address><ip>\n192.0.2.1/24\n</ip></address></ipv4>"),
     "input:4: <ip> is \" 192.0.2.1/24 \"" + kPlen4 + " No blanks may stand around 192.0.2.1/24."},
    {"JsonHexNumber", JsonWithL3("\"name\": \"7\", \"lower-layer-if\": {\n\"vlan\": 0x14}"),
     "input:5: a comma or } is expected before x14"},
    {"JsonNoDottedQuad",
     "{\"velmor-internal:internal\": {\"ospfv3-interface-l3\": [\n"
     "{\"process\": 1, \"area\": \"0\", \"ospfv3-pm-if-name\": \"l3-7\"}]}}",
     "input:2: \"area\" is \"0\", but takes an IPv4 address such as 192.0.2.1"},
    {"XmlKeysInOtherOrder",
     "<internal xmlns=\"urn:velmor:yang:internal\"><ospfv3-interface-l3>\n<area>0.0.0.0</area>\n"
     "<process>1</process><ospfv3-pm-if-name>l3-7</ospfv3-pm-if-name></ospfv3-interface-l3></internal>",
     "input:2: <area> is a key of <ospfv3-interface-l3> and stands behind <process>"},
    {"JsonNoAddress", JsonWithL3("\"name\": \"7\", \"ipv4\": {\"address\": {\n\"ip\": \"lan\"}}"),
     "input:5: \"ip\" is \"lan\"" + kPlen4},
    {"JsonDottedQuadForOctets", JsonRoute("\"rtmStaticRtNetworkAddr\": \"10.0.0.0\""),
     "input:2: \"rtmStaticRtNetworkAddr\" is \"10.0.0.0\"" + kOctets +
         " 10.0.0.0 is written 0a:00:00:00 here."},
    {"XmlDottedQuadForOctets",
     XmlRoute("<rtmStaticRtNextHopAddr>192.0.2.1</rtmStaticRtNextHopAddr>"),
     "input:2: <rtmStaticRtNextHopAddr> is \"192.0.2.1\"" + kOctets +
         " 192.0.2.1 is written c0:00:02:01 here."},
    {"JsonIpv6ForOctets", JsonRoute("\"rtmStaticRtNetworkAddr\": \"2001:db8::\""),
     "input:2: \"rtmStaticRtNetworkAddr\" is \"2001:db8::\"" + kOctets +
         " 2001:db8:: is written 20:01:0d:b8:00:00:00:00:00:00:00:00:00:00:00:00 here."},
    {"JsonPrefixForOctets", JsonRoute("\"rtmStaticRtNetworkAddr\": \"10.0.0.0/8\""),
     "input:2: \"rtmStaticRtNetworkAddr\" is \"10.0.0.0/8\"" + kOctets +
         " 10.0.0.0 is written 0a:00:00:00 here. A length has no place in it."},
    {"JsonOctetsOfOneDigit", JsonRoute("\"rtmStaticRtNetworkAddr\": \"a:0:0:1\""),
     "input:2: \"rtmStaticRtNetworkAddr\" is \"a:0:0:1\"" + kOctets +
         " a:0:0:1 is written 0a:00:00:01 here."},
    {"JsonOctetsWithHyphens", JsonRoute("\"rtmStaticRtNetworkAddr\": \"0a-00-00-00\""),
     "input:2: \"rtmStaticRtNetworkAddr\" is \"0a-00-00-00\"" + kOctets +
         " 0a-00-00-00 is written 0a:00:00:00 here."},
    {"JsonLeadingZeroBehindRange",
     JsonWithL3("\"name\": \"7\", \"ipv4\": {\"address\": {\n\"ip\": \"192.0.2.1/099\"}}"),
     "input:5: \"ip\" is \"192.0.2.1/099\"" + kPlen4},
    // A number that only the parser can work out is not blamed for what stands behind it.
    {"JsonExponent",
     JsonWithL3("\"name\": \"7\", \"lower-layer-if\": {\n\"vlan\": 1e2},\n"
                "\"ipv4\": {\"address\": {\"ip\": \"lan\"}}"),
     "input:6: \"ip\" is \"lan\"" + kPlen4},
    {"JsonHexNumberForOctets", JsonRoute("\"rtmStaticRtNetworkAddr\": \"0x0a000000\""),
     "input:2: \"rtmStaticRtNetworkAddr\" is \"0x0a000000\"" + kOctets +
         " 0x0a000000 is written 0a:00:00:00 here."},
    {"JsonOctetsWithoutColons", JsonRoute("\"rtmStaticRtNetworkAddr\": \"0A000000\""),
     "input:2: \"rtmStaticRtNetworkAddr\" is \"0A000000\"" + kOctets +
         " 0A000000 is written 0A:00:00:00 here."},
};

const TextErrorCase kForms[] = {
    {"JsonObjectForList",
     "{\"velmor-config:config\": {\"interface\": {\n\"velmor-ip-app:l3\": {\"name\": \"7\"}}}}",
     "input:2: \"l3\" takes an array of objects, [{...}]"},
    {"JsonTextForContainer", "{\"velmor-config:config\":\n\"on\"}",
     "input:2: \"config\" takes an object, {...}"},
    {"JsonObjectForLeaf", JsonWithL3("\"name\": \"7\",\n\"vrf\": {}"),
     "input:5: \"vrf\" takes one value"},
    {"JsonArrayForLeaf", JsonWithL3("\"name\": \"7\",\n\"vrf\": [\"red\"]"),
     "input:5: \"vrf\" takes one value"},
    {"JsonArrayInArray",
     "{\"velmor-config:config\": {\"interface\": {\"velmor-ip-app:l3\": [\n[]]}}}",
     "input:2: \"l3\" takes an array of objects, [{...}]"},
    {"XmlTextInContainer", "<config xmlns=\"urn:velmor:yang:config\">\non</config>",
     "input:2: text in <config>, which holds elements and no text: \"on\""},
    {"XmlTextInTheWrapper", "<data>\nhello\n</data>",
     "input:2: text in the configuration, which holds elements and no text: \"hello\""},
};

const TextErrorCase kMetadata[] = {
    {"XmlAttribute", XmlWithL3("<name>7</name>\n<vrf kind=\"x\">red</vrf>"),
     "input:5: the attribute kind of <vrf> is not read; values are elements, such as "
     "<kind>...</kind>"},
    {"XmlKeyAsAttribute",
     kConfigOpen + "<l3 xmlns=\"urn:velmor:yang:ip-app\" name=\"7\"></l3>\n" + kConfigClose,
     "input:3: the attribute name of <l3> is not read; values are elements, such as "
     "<name>...</name>"},
    {"XmlOperation",
     XmlWithL3("<name>7</name>\n<vrf xmlns:nc=\"urn:ietf:params:xml:ns:netconf:base:1.0\" "
               "nc:operation=\"delete\"/>"),
     "input:5: the attribute operation of <vrf> is not read; values are elements, such as "
     "<operation>...</operation>"},
    {"XmlOperationOfYang",
     "<data><config xmlns=\"urn:velmor:yang:config\" xmlns:y=\"urn:ietf:params:xml:ns:yang:1\" "
     "y:operation=\"delete\"/></data>",
     "input:1: the attribute operation of <config> is not read; values are elements, such as "
     "<operation>...</operation>"},
    {"XmlOperationOnTheWrapper",
     "<config xmlns:nc=\"urn:ietf:params:xml:ns:netconf:base:1.0\" a=\"1\" "
     "nc:operation=\"delete\"/>",
     "input:1: the attribute operation of <config> belongs to an edit"},
    {"XmlLanguage", XmlWithL3("<name xml:lang=\"en\">7</name>"),
     "input:4: the attribute lang of <name> is not read; values are elements, such as <lang>...</lang>"},
    {"JsonAnnotation", JsonWithL3("\"name\": \"7\", \"vrf\": \"red\",\n\"@vrf\": {\"a:b\": 1}"),
     "input:5: the annotation \"@vrf\" is not read; leave it out"},
    {"JsonAnnotationOfNothing", JsonWithL3("\"name\": \"7\",\n\"@colour\": {}"),
     "input:5: the annotation \"@colour\" is not read; leave it out"},
    {"JsonOperation",
     JsonWithL3("\"name\": \"7\", \"ipv4\": {\n\"@\": {\"yang:operation\": \"delete\"}}"),
     "input:5: the annotation \"@\" is not read; leave it out"},
    {"JsonAnnotationOfWrongForm",
     "{\"velmor-config:config\": {\"@interface\": 5, \"interface\": {}}}",
     "input:1: the annotation \"@interface\" is not read; leave it out"},
};

const TextErrorCase kSyntax[] = {
    {"TrailingComma", JsonWithL3("\"name\": \"7\",\n"), "input:5: comma before }"},
    {"MissingLastBrace", "{\n\"velmor-config:config\": {}\n",
     "input:3: the text ends inside an object, which begins on line 1"},
    {"MissingEndTag", "<config xmlns=\"urn:velmor:yang:config\">\n<interface>\n</interface>\n",
     "input:4: the text ends inside <config>, which begins on line 1"},
};

const TextErrorCase kDuplicates[] = {
    {"JsonEntry", JsonWithL3("\"name\": \"7\"}, {\"name\": \"8\"},\n{\"name\": \"7\""),
     "input:5: a second \"l3\" with name \"7\"; the first is on line 3"},
    {"XmlEntry",
     kConfigOpen +
         "<l3 xmlns=\"urn:velmor:yang:ip-app\"><name>7</name></l3>\n"
         "<l3 xmlns=\"urn:velmor:yang:ip-app\"><name>7</name></l3>\n" +
         kConfigClose,
     "input:4: a second <l3> with name \"7\"; the first is on line 3"},
    {"SeveralKeys",
     "{\"velmor-internal:internal\": {\"ospfv3-interface-l3\": [\n"
     "{\"process\": 1, \"area\": \"0.0.0.1\", \"ospfv3-pm-if-name\": \"l3-7\"},\n"
     "{\"process\": 1, \"area\": \"0.0.0.2\", \"ospfv3-pm-if-name\": \"l3-7\"},\n"
     "{\"ospfv3-pm-if-name\": \"l3-7\", \"area\": \"0.0.0.1\", \"process\": 1}]}}",
     "input:4: a second \"ospfv3-interface-l3\" with process \"1\", area \"0.0.0.1\", "
     "ospfv3-pm-if-name \"l3-7\"; the first is on line 2"},
    {"OtherTextOfOneKey",
     JsonWithL3("\"name\": \"7\", \"ipv6\": {\"address\": [{\"ip\": \"::1/64\"},\n"
                "{\"ip\": \"0:0::1/64\"}]}"),
     "input:5: a second \"address\" with ip \"::1/64\"; the first is on line 4"},
    {"JsonLeaf", JsonWithL3("\"name\": \"7\",\n\"vrf\": \"a\",\n\"velmor-ip-app:vrf\": \"b\""),
     "input:6: \"vrf\" stands twice in one \"l3\"; the first is on line 5"},
    {"XmlLeaf", XmlWithL3("<name>7</name>\n<vrf>a</vrf>\n<vrf>a</vrf>"),
     "input:6: <vrf> stands twice in one <l3>; the first is on line 5"},
    {"JsonList",
     "{\"velmor-config:config\": {\"interface\": {\"velmor-ip-app:l3\": [],\n"
     "\"velmor-ip-app:l3\": []}}}",
     "input:2: \"l3\" stands twice in one \"interface\"; the first is on line 1"},
    {"XmlContainerAtTheTop",
     "<config xmlns=\"urn:velmor:yang:config\"/>\n<config xmlns=\"urn:velmor:yang:config\"/>",
     "input:2: <config> stands twice; the first is on line 1"},
    {"JsonMissingKey", JsonWithL3("\"vrf\": \"red\""),
     "input:3: this \"l3\" lacks its key \"name\""},
};

const char kRequest[] =
    "input:2: a request to a NETCONF server is no configuration; one may stand in its <config>";
const std::string kBase = " xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\"";

const TextErrorCase kOtherDocuments[] = {
    {"RpcError",
     "<rpc-reply" + kBase + ">\n<rpc-error><error-tag>invalid-value</error-tag></rpc-error>" +
         "</rpc-reply>",
     "input:2: an <rpc-error> tells why a request failed and holds no configuration"},
    {"RpcErrorWithoutNamespace", "<rpc-reply>\n<rpc-error/></rpc-reply>",
     "input:2: an <rpc-error> tells why a request failed and holds no configuration"},
    {"Ok", "<rpc-reply" + kBase + ">\n<ok/></rpc-reply>",
     "input:2: the reply <ok/> holds no configuration"},
    {"ReplyWithoutData", "\n<rpc-reply" + kBase + "/>", "input:2: the <rpc-reply> holds no <data>"},
    {"Rpc", "\n<rpc" + kBase + "><edit-config/></rpc>", kRequest},
    {"EditConfig", "\n<edit-config" + kBase + "><config/></edit-config>",
     "input:2: an <edit-config> request is no configuration; one may stand in its <config>"},
    {"Hello", "\n<hello" + kBase + "/>", "input:2: a <hello> of NETCONF holds no configuration"},
    {"RestconfErrors", "{\n\"ietf-restconf:errors\": {}}",
     "input:2: an error reply of a RESTCONF server is no configuration"},
    {"OtherData", "<rpc-reply" + kBase + ">\n<data xmlns=\"urn:x\"/></rpc-reply>",
     "input:2: <data> of the namespace \"urn:x\" is no wrapper that is known; that of NETCONF is "
     "<data xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\">"},
    {"OtherElementInReply", "<rpc-reply" + kBase + ">\n<x/></rpc-reply>",
     "input:2: <x> in an <rpc-reply>, which holds <data>"},
    {"EndMarkOfNetconf", "<data/>\n]]>]]>\n",
     "input:2: the end mark of a NETCONF message; leave it out"},
    {"EndOfChunks", "<data/>\n##\n", "input:2: the end mark of a NETCONF message; leave it out"},
    {"Chunks", "\n#392\n<data/>",
     "input:2: a NETCONF message in chunks (RFC 6242); leave out the lines that begin with #"},
    {"PromptBehind", "<data/>\nadmin@router> ",
     "input:2: text after the end of the configuration: admin@router>"},
    {"Section", "[interface]\nname = 7\n",
     "input:1: neither XML nor JSON: it begins with \"[interface]\""},
    {"Numbered", "12: <config/>\n",
     "input:1: neither XML nor JSON: it begins with \"12: <config/>\""},
    {"Difference", "--- a\n+++ b\n", "input:1: neither XML nor JSON: it begins with \"--- a\""},
    {"YamlEntry", "- name: 7\n", "input:1: neither XML nor JSON: it looks like YAML"},
    {"Utf32", std::string("\xff\xfe\0\0<\0\0\0", 8),
     "input:1: neither XML nor JSON: it is in UTF-32, not in UTF-8"},
    {"Gzip", "\x1f\x8b\x08", "input:1: neither XML nor JSON: it is compressed by gzip"},
    {"Zstd", "\x28\xb5\x2f\xfd", "input:1: neither XML nor JSON: it is compressed by zstd"},
    {"Zip", "PK\x03\x04", "input:1: neither XML nor JSON: it is a ZIP archive"},
    {"Utf16WithoutMark", std::string("<\0c\0", 4),
     "input:1: neither XML nor JSON: it is in UTF-16, not in UTF-8"},
    {"Utf16BigEndian", "\xfe\xff", "input:1: neither XML nor JSON: it is in UTF-16, not in UTF-8"},
    {"YamlDocument", "---\nconfig:\n", "input:1: neither XML nor JSON: it looks like YAML"},
    {"YamlKey", "velmor-config:config:\n  interface:\n",
     "input:1: neither XML nor JSON: it looks like YAML"},
    {"YamlValue", "name: lan-1\n", "input:1: neither XML nor JSON: it looks like YAML"},
    {"Commands", "interface l3 7\n vrf red\n",
     "input:1: neither XML nor JSON: it begins with \"interface l3 7\""},
    {"LongLine", std::string(50, 'x'),
     "input:1: neither XML nor JSON: it begins with \"" + std::string(40, 'x') + "...\""},
    {"JsonArray", "[\n]", "input:1: a JSON array, but a configuration is an object, {...}"},
};

class Mistake : public testing::TestWithParam<TextErrorCase> {};

TEST_P(Mistake, IsToldWithTheRightForm) {
  EXPECT_EQ(ErrorOfText(GetParam().text), GetParam().error);
}

const auto kRowName = [](const auto& row) { return std::string(row.param.name); };
INSTANTIATE_TEST_SUITE_P(Names, Mistake, testing::ValuesIn(kNames), kRowName);
INSTANTIATE_TEST_SUITE_P(Values, Mistake, testing::ValuesIn(kValues), kRowName);
INSTANTIATE_TEST_SUITE_P(Forms, Mistake, testing::ValuesIn(kForms), kRowName);
INSTANTIATE_TEST_SUITE_P(Metadata, Mistake, testing::ValuesIn(kMetadata), kRowName);
INSTANTIATE_TEST_SUITE_P(Syntax, Mistake, testing::ValuesIn(kSyntax), kRowName);
INSTANTIATE_TEST_SUITE_P(Duplicates, Mistake, testing::ValuesIn(kDuplicates), kRowName);
INSTANTIATE_TEST_SUITE_P(OtherDocuments, Mistake, testing::ValuesIn(kOtherDocuments), kRowName);

// Of several faults the first one in the text is told, also when a later one shows sooner.
TEST(Mistakes, AreToldInTheOrderOfTheText) {
  EXPECT_EQ(ErrorOfText(JsonWithL3("\"name\": \"7\", \"lower-layer-if\": {\n\"vlan\": 4095},\n"
                                   "\"colour\": 1")),
            "input:5: \"vlan\" is 4095" + kVlan);
}

}  // namespace
