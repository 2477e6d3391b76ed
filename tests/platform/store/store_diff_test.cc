#include "store/diff.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "confd_maapi.h"
#include "support/store_fixture.h"

namespace {

using tests::RowName;
using tests::StoreTest;

const char* OperationName(confd_iter_op op) {
  switch (op) {
    case MOP_CREATED:
      return "created";
    case MOP_DELETED:
      return "deleted";
    case MOP_MODIFIED:
      return "modified";
    case MOP_VALUE_SET:
      return "set";
    case MOP_MOVED_AFTER:
      return "moved";
    case MOP_ATTR_SET:
      return "attribute";
  }
  return "?";
}

// What the iteration saw, one event to a line, and what it answered: the answer whose line begins
// as given.
struct Walk {
  std::string events;
  std::map<std::string, confd_iter_ret> answers;
};

confd_iter_ret Record(confd_hkeypath_t* kp, confd_iter_op op, confd_value_t* oldv,
                      confd_value_t* newv, void* state) {
  auto& walk = *static_cast<Walk*>(state);
  EXPECT_EQ(oldv, nullptr);
  char path[256];
  confd_pp_kpath(path, sizeof(path), kp);
  std::string event = std::string(OperationName(op)) + " " + path;
  if (op == MOP_VALUE_SET) {
    if (newv == nullptr) return ITER_STOP;
    char text[64];
    confd_pp_value(text, sizeof(text), newv);
    event += std::string(" = ") + text;
  } else if (op == MOP_MOVED_AFTER) {
    event += newv == nullptr ? " first" : " after";
    for (const confd_value_t* key = newv; key != nullptr && key->type != C_NOEXISTS; ++key) {
      char text[64];
      confd_pp_value(text, sizeof(text), key);
      event += std::string(" ") + text;
    }
  } else {
    EXPECT_EQ(newv, nullptr) << event;
  }
  walk.events += event + "\n";
  for (const auto& [start, answer] : walk.answers) {
    if (event.starts_with(start)) return answer;
  }
  return ITER_RECURSE;
}

class DiffTest : public StoreTest {
 protected:
  std::string Events(int flags = 0) {
    Walk walk;
    EXPECT_EQ(maapi_diff_iterate(sock_, thandle_, Record, flags, &walk), CONFD_OK);
    return walk.events;
  }

  std::string EventsBelow(const char* path, std::map<std::string, confd_iter_ret> answers = {}) {
    Walk walk{{}, std::move(answers)};
    const int result = maapi_keypath_diff_iterate(sock_, thandle_, Record, 0, &walk, "%s", path);
    return result == CONFD_OK ? walk.events : "error " + std::to_string(confd_errno);
  }
};

// --- Which events, in which order
// -----------------------------------------------------------------------------------

struct DiffCase {
  const char* name;
  const char* running;
  const char* candidate;
  const char* events;
};

std::ostream& operator<<(std::ostream& out, const DiffCase& c) {
  return out << c.running << " -> " << c.candidate;
}

class Diff : public DiffTest, public testing::WithParamInterface<DiffCase> {};

TEST_P(Diff, Reports) {
  Open(GetParam().running, GetParam().candidate);
  EXPECT_EQ(Events(), GetParam().events);
}

#define SHELF(CONTENT) R"({"store-sample:room":{"shelf":[{"name":"s")" CONTENT "}]}}"
#define VALUES(CONTENT) R"({"store-sample:values":{)" CONTENT "}}"
#define NOTES(CONTENT) SHELF(R"(,"note":[)" CONTENT "]")

const DiffCase kLeafCases[] = {
    {"Nothing", "{}", "{}", ""},
    {"SameValue", VALUES(R"("text":"a")"), VALUES(R"("text":"a")"), ""},
    {"SameValueOtherSpelling", VALUES(R"("ipv6":"2001:DB8::1")"), VALUES(R"("ipv6":"2001:db8::1")"),
     ""},
    {"LeafCreated", "{}", VALUES(R"("text":"a")"), "set /values/text = a\n"},
    {"LeafChanged", VALUES(R"("text":"a")"), VALUES(R"("text":"b")"), "set /values/text = b\n"},
    {"LeafDeleted", VALUES(R"("text":"a")"), "{}", "deleted /values/text\n"},
    {"LeafSetToEmptyText", VALUES(R"("text":"a")"), VALUES(R"("text":"")"),
     "set /values/text = \n"},
    {"DefaultReplaced", "{}", VALUES(R"("answer":43)"), "set /values/answer = 43\n"},
    {"DefaultBackInEffect", VALUES(R"("answer":43)"), "{}", "set /values/answer = 42\n"},
    {"DefaultWrittenOut", "{}", VALUES(R"("answer":42)"), ""},
    {"WrittenDefaultDeleted", VALUES(R"("answer":42)"), "{}", ""},
    {"EmptyLeafCreated", "{}", VALUES(R"("marker":[null])"), "created /values/marker\n"},
    {"EmptyLeafDeleted", VALUES(R"("marker":[null])"), "{}", "deleted /values/marker\n"},
    {"LeavesInSchemaOrder", "{}", VALUES(R"("text":"t","int8":1,"uint8":2)"),
     "set /values/int8 = 1\nset /values/uint8 = 2\nset /values/text = t\n"},
    {"LeafListEntries", VALUES(R"("word":["a","b"])"), VALUES(R"("word":["b","c"])"),
     "deleted /values/word{a}\ncreated /values/word{c}\n"},
    {"LeafListInOtherOrder", VALUES(R"("word":["a","b"])"), VALUES(R"("word":["b","a"])"), ""},
    {"LeafListOfTheUserReordered", VALUES(R"("step":["a","b"])"), VALUES(R"("step":["b","a"])"),
     "moved /values/step{a} after b\n"},
    {"OtherCaseOfAChoice", R"({"store-sample:tcp-port":1})", R"({"store-sample:udp":{"port":2}})",
     "deleted /tcp-port\nset /udp/port = 2\n"},
    {"ModulesInOrderOfTheSchema", "{}",
     R"({"store-sample:panel":{"lamp":"s"},"store-other:panel":{"lamp":"o"}})",
     "set /panel/lamp = o\nset /panel/lamp = s\n"},
};
INSTANTIATE_TEST_SUITE_P(Leaves, Diff, testing::ValuesIn(kLeafCases), RowName<DiffCase>);

const DiffCase kEntryCases[] = {
    {"CreatedWithKeyLeafAndDefault", "{}", SHELF(""),
     "created /room/shelf{s}\nset /room/shelf{s}/name = s\nset /room/shelf{s}/height = 1\n"},
    {"CreatedWithContent", "{}",
     SHELF(R"(,"height":3,"fragile":[null],"place":{"floor":-1},"cover":{"color":"c"})"),
     "created /room/shelf{s}\nset /room/shelf{s}/name = s\nset /room/shelf{s}/height = 3\n"
     "created /room/shelf{s}/fragile\ncreated /room/shelf{s}/cover\n"
     "set /room/shelf{s}/cover/color = c\nset /room/shelf{s}/place/floor = -1\n"},
    {"CreatedWithEntriesBelow", "{}", SHELF(R"(,"slot":[{"row":1,"column":"x","item":"i"}])"),
     "created /room/shelf{s}\nset /room/shelf{s}/name = s\nset /room/shelf{s}/height = 1\n"
     "created /room/shelf{s}/slot{1 x}\nset /room/shelf{s}/slot{1 x}/row = 1\n"
     "set /room/shelf{s}/slot{1 x}/column = x\nset /room/shelf{s}/slot{1 x}/item = i\n"},
    {"DeletedIsOneEvent", SHELF(R"(,"material":"m","slot":[{"row":1,"column":"x"}])"), "{}",
     "deleted /room/shelf{s}\n"},
    {"Modified", SHELF(""), SHELF(R"(,"material":"m")"),
     "modified /room/shelf{s}\nset /room/shelf{s}/material = m\n"},
    {"ModifiedOnceForSeveralChanges", SHELF(R"(,"height":2)"),
     SHELF(R"(,"material":"m","place":{"floor":1})"),
     "modified /room/shelf{s}\nset /room/shelf{s}/height = 1\nset /room/shelf{s}/material = m\n"
     "set /room/shelf{s}/place/floor = 1\n"},
    {"AncestorsBeforeTheChange", SHELF(R"(,"slot":[{"row":1,"column":"x"}])"),
     SHELF(R"(,"slot":[{"row":1,"column":"x","item":"i"}])"),
     "modified /room/shelf{s}\nmodified /room/shelf{s}/slot{1 x}\n"
     "set /room/shelf{s}/slot{1 x}/item = i\n"},
    {"EntryBelowCreated", SHELF(""), SHELF(R"(,"slot":[{"row":1,"column":"x"}])"),
     "modified /room/shelf{s}\ncreated /room/shelf{s}/slot{1 x}\n"
     "set /room/shelf{s}/slot{1 x}/row = 1\nset /room/shelf{s}/slot{1 x}/column = x\n"},
    {"EntryBelowDeleted", SHELF(R"(,"slot":[{"row":1,"column":"x"}])"), SHELF(""),
     "modified /room/shelf{s}\ndeleted /room/shelf{s}/slot{1 x}\n"},
    {"EntriesInKeyOrder", R"({"store-sample:gauge":[{"id":10,"reading":1},{"id":9}]})",
     R"({"store-sample:gauge":[{"id":100},{"id":10,"reading":2}]})",
     "deleted /gauge{9}\nmodified /gauge{10}\nset /gauge{10}/reading = 2\n"
     "created /gauge{100}\nset /gauge{100}/id = 100\n"},
    {"OrderOfAKeyOrderedListMeansNothing", R"({"store-sample:gauge":[{"id":1},{"id":2}]})",
     R"({"store-sample:gauge":[{"id":2},{"id":1}]})", ""},
    {"ReorderedBelowAnEntry", SHELF(R"(,"slot":[{"row":1,"column":"x"},{"row":2,"column":"x"}])"),
     SHELF(R"(,"slot":[{"row":2,"column":"x"},{"row":1,"column":"x"}])"), ""},
    {"KeysThatDifferInTheirZoneOnly",
     R"({"store-sample:keyed":{"by-ipv4-zone":[{"k":"10.0.0.1%a"}]}})",
     R"({"store-sample:keyed":{"by-ipv4-zone":[{"k":"10.0.0.1%b"}]}})",
     "deleted /keyed/by-ipv4-zone{10.0.0.1}\ncreated /keyed/by-ipv4-zone{10.0.0.1}\n"
     "set /keyed/by-ipv4-zone{10.0.0.1}/k = 10.0.0.1\n"},
    {"PresenceContainerCreated", "{}", R"({"store-sample:box":{"label":"l"}})",
     "created /box\nset /box/size = 7\nset /box/label = l\n"},
    {"PresenceContainerDeleted", R"({"store-sample:box":{"label":"l"}})", "{}", "deleted /box\n"},
    {"PresenceContainerChangedBelow", R"({"store-sample:box":{}})",
     R"({"store-sample:box":{"label":"l"}})", "set /box/label = l\n"},
};
INSTANTIATE_TEST_SUITE_P(Entries, Diff, testing::ValuesIn(kEntryCases), RowName<DiffCase>);

const DiffCase kUserOrderCases[] = {
    {"SameOrder", NOTES(R"({"id":"a"},{"id":"b"})"), NOTES(R"({"id":"a"},{"id":"b"})"), ""},
    {"LastToTheFront", NOTES(R"({"id":"a"},{"id":"b"},{"id":"c"})"),
     NOTES(R"({"id":"c"},{"id":"a"},{"id":"b"})"),
     "modified /room/shelf{s}\nmoved /room/shelf{s}/note{c} first\n"},
    {"FirstToTheEnd", NOTES(R"({"id":"a"},{"id":"b"},{"id":"c"})"),
     NOTES(R"({"id":"b"},{"id":"c"},{"id":"a"})"),
     "modified /room/shelf{s}\nmoved /room/shelf{s}/note{a} after c\n"},
    {"Reversed", NOTES(R"({"id":"a"},{"id":"b"},{"id":"c"})"),
     NOTES(R"({"id":"c"},{"id":"b"},{"id":"a"})"),
     "modified /room/shelf{s}\nmoved /room/shelf{s}/note{b} after c\n"
     "moved /room/shelf{s}/note{a} after b\n"},
    {"DeletionMovesNothing", NOTES(R"({"id":"a"},{"id":"b"},{"id":"c"})"),
     NOTES(R"({"id":"a"},{"id":"c"})"),
     "modified /room/shelf{s}\ndeleted /room/shelf{s}/note{b}\n"},
    {"InsertionMovesNothing", NOTES(R"({"id":"a"},{"id":"c"})"),
     NOTES(R"({"id":"a"},{"id":"b"},{"id":"c"})"),
     "modified /room/shelf{s}\ncreated /room/shelf{s}/note{b}\n"
     "set /room/shelf{s}/note{b}/id = b\n"},
    {"MovedAndChanged", NOTES(R"({"id":"a"},{"id":"b"},{"id":"c"})"),
     NOTES(R"({"id":"c","text":"t"},{"id":"a"},{"id":"b"})"),
     "modified /room/shelf{s}\nmoved /room/shelf{s}/note{c} first\n"
     "modified /room/shelf{s}/note{c}\nset /room/shelf{s}/note{c}/text = t\n"},
};
INSTANTIATE_TEST_SUITE_P(UserOrder, Diff, testing::ValuesIn(kUserOrderCases), RowName<DiffCase>);

TEST_F(DiffTest, ReportsModifiedPresenceContainersOnRequest) {
  Open(R"({"store-sample:box":{"thing":[{"name":"t"}]}})",
       R"({"store-sample:box":{"thing":[{"name":"t","weight":1}]}})");
  EXPECT_EQ(Events(ITER_WANT_P_CONTAINER),
            "modified /box\nmodified /box/thing{t}\nset /box/thing{t}/weight = 1\n");
  EXPECT_EQ(Events(), "modified /box/thing{t}\nset /box/thing{t}/weight = 1\n");
}

// --- Restriction to a path
// ------------------------------------------------------------------------------------------

struct BelowCase {
  const char* name;
  const char* path;
  const char* events;
};

std::ostream& operator<<(std::ostream& out, const BelowCase& c) { return out << c.path; }

class DiffBelow : public DiffTest, public testing::WithParamInterface<BelowCase> {};

TEST_P(DiffBelow, ReportsOnlyWhatIsThere) {
  Open(R"({"store-sample:values":{"text":"old","answer":1},
           "store-sample:room":{"shelf":[
             {"name":"kept","slot":[{"row":1,"column":"x"}]}, {"name":"gone","material":"m"}]}})",
       R"({"store-sample:values":{"text":"new"},
           "store-sample:room":{"shelf":[
             {"name":"kept","slot":[{"row":1,"column":"x","item":"i"}],"place":{"floor":2}},
             {"name":"made"}]},
           "store-sample:box":{"label":"l"}})");
  EXPECT_EQ(EventsBelow(GetParam().path), GetParam().events);
}

const BelowCase kBelowCases[] = {
    {"ListWithoutKeys", "/room/shelf",
     "deleted /room/shelf{gone}\nmodified /room/shelf{kept}\n"
     "set /room/shelf{kept}/place/floor = 2\nmodified /room/shelf{kept}/slot{1 x}\n"
     "set /room/shelf{kept}/slot{1 x}/item = i\ncreated /room/shelf{made}\n"
     "set /room/shelf{made}/name = made\nset /room/shelf{made}/height = 1\n"},
    {"Entry", "/room/shelf{kept}",
     "modified /room/shelf{kept}\nset /room/shelf{kept}/place/floor = 2\n"
     "modified /room/shelf{kept}/slot{1 x}\nset /room/shelf{kept}/slot{1 x}/item = i\n"},
    {"EntryCreated", "/room/shelf{made}",
     "created /room/shelf{made}\nset /room/shelf{made}/name = made\n"
     "set /room/shelf{made}/height = 1\n"},
    {"EntryDeleted", "/room/shelf{gone}", "deleted /room/shelf{gone}\n"},
    {"EntryInNeither", "/room/shelf{never}", ""},
    {"EntriesAboveAreNotReported", "/room/shelf{kept}/slot",
     "modified /room/shelf{kept}/slot{1 x}\nset /room/shelf{kept}/slot{1 x}/item = i\n"},
    {"Container", "/values", "set /values/text = new\nset /values/answer = 42\n"},
    {"ContainerBelowEntry", "/room/shelf{kept}/place", "set /room/shelf{kept}/place/floor = 2\n"},
    {"PresenceContainer", "/box", "created /box\nset /box/size = 7\nset /box/label = l\n"},
    {"Leaf", "/values/text", "set /values/text = new\n"},
    {"LeafUnchanged", "/values/greeting", ""},
    {"LeafBelowEntry", "/room/shelf{kept}/slot{1 x}/item",
     "set /room/shelf{kept}/slot{1 x}/item = i\n"},
    {"ListBelowAbsentEntry", "/room/shelf{never}/slot", ""},
    {"EmptyList", "/gauge", ""},
    {"ContainerUnchanged", "/keyed", ""},
    {"UnknownNode", "/nowhere", "error 8"},
    {"AmbiguousNode", "/panel", "error 8"},
};
INSTANTIATE_TEST_SUITE_P(Paths, DiffBelow, testing::ValuesIn(kBelowCases), RowName<BelowCase>);

// --- Answers of the caller
// ------------------------------------------------------------------------------------------

class DiffAnswers : public DiffTest {
 protected:
  DiffAnswers() {
    Open(R"({"store-sample:room":{"shelf":[
              {"name":"a","slot":[{"row":1,"column":"x"},{"row":2,"column":"x"}]},{"name":"c"}]}})",
         R"({"store-sample:room":{"shelf":[
              {"name":"a","slot":[{"row":1,"column":"x","item":"i"},
                                  {"row":2,"column":"x","item":"j"}],"note":[{"id":"n"}]},
              {"name":"b","material":"m"},
              {"name":"c","material":"m"}]}})");
  }
};

TEST_F(DiffAnswers, StopEndsTheWalkWithSuccess) {
  EXPECT_EQ(EventsBelow("/", {{"modified /room/shelf{a}/slot{1 x}", ITER_STOP}}),
            "modified /room/shelf{a}\nmodified /room/shelf{a}/slot{1 x}\n");
  EXPECT_EQ(EventsBelow("/", {{"modified", ITER_STOP}}), "modified /room/shelf{a}\n");
  EXPECT_EQ(EventsBelow("/room/shelf{b}", {{"set", ITER_STOP}}),
            "created /room/shelf{b}\nset /room/shelf{b}/name = b\n");
}

TEST_F(DiffAnswers, ContinueOnACreatedEntrySkipsWhatIsInIt) {
  EXPECT_EQ(EventsBelow("/room/shelf", {{"created /room/shelf{b}", ITER_CONTINUE},
                                        {"modified /room/shelf{a}", ITER_CONTINUE}}),
            "modified /room/shelf{a}\ncreated /room/shelf{b}\n"
            "modified /room/shelf{c}\nset /room/shelf{c}/material = m\n");
}

TEST_F(DiffAnswers, ContinueOnAnInnerModifiedEntrySkipsOnlyThat) {
  EXPECT_EQ(EventsBelow("/room/shelf{a}", {{"modified /room/shelf{a}/slot{1 x}", ITER_CONTINUE}}),
            "modified /room/shelf{a}\nmodified /room/shelf{a}/slot{1 x}\n"
            "modified /room/shelf{a}/slot{2 x}\nset /room/shelf{a}/slot{2 x}/item = j\n"
            "created /room/shelf{a}/note{n}\nset /room/shelf{a}/note{n}/id = n\n");
}

TEST_F(DiffAnswers, ContinueOnALeafGoesOn) {
  EXPECT_EQ(EventsBelow("/room/shelf{b}", {{"set", ITER_CONTINUE}}),
            "created /room/shelf{b}\nset /room/shelf{b}/name = b\n"
            "set /room/shelf{b}/height = 1\nset /room/shelf{b}/material = m\n");
}

TEST_F(DiffTest, ContinueBelowAnUnreportedPresenceContainerSkipsTheEntryAbove) {
  Open(SHELF(R"(,"cover":{})"), SHELF(R"(,"cover":{"color":"c"},"place":{"floor":1})"));
  EXPECT_EQ(EventsBelow("/", {{"modified", ITER_CONTINUE}}), "modified /room/shelf{s}\n");
}

TEST_F(DiffTest, ContinueOnAMovedEntrySkipsWhatChangedInIt) {
  Open(NOTES(R"({"id":"a"},{"id":"b"},{"id":"c"})"),
       NOTES(R"({"id":"c","text":"t"},{"id":"a"},{"id":"b","text":"u"})"));
  EXPECT_EQ(EventsBelow("/room/shelf{s}/note", {{"moved", ITER_CONTINUE}}),
            "moved /room/shelf{s}/note{c} first\nmodified /room/shelf{s}/note{b}\n"
            "set /room/shelf{s}/note{b}/text = u\n");
}

TEST_F(DiffTest, NeedsATransaction) {
  Open("{}");
  Walk walk;
  EXPECT_EQ(maapi_diff_iterate(sock_, thandle_ + 1000, Record, 0, &walk), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOTRANS);
  EXPECT_EQ(walk.events, "");
}

// --- The events lead from one configuration to the other
// ------------------------------------------------------------

using Gauges = std::map<uint32_t, std::map<std::string, std::string>>;  // entry to leaf to value

std::string Json(const Gauges& gauges) {
  std::string entries;
  for (const auto& [id, leaves] : gauges) {
    entries += entries.empty() ? "" : ",";
    entries += "{\"id\":" + std::to_string(id);
    const auto reading = leaves.find("reading");
    if (reading != leaves.end()) entries += ",\"reading\":" + reading->second;
    entries += "}";
  }
  return "{\"store-sample:gauge\":[" + entries + "]}";
}

Gauges RandomGauges(std::mt19937& random) {
  Gauges gauges;
  for (uint32_t id = 0; id < 12; ++id) {
    if (random() % 2 == 0) continue;
    gauges[id]["id"] = std::to_string(id);
    if (random() % 3 > 0) gauges[id]["reading"] = std::to_string(random() % 3);
  }
  return gauges;
}

confd_iter_ret Apply(confd_hkeypath_t* kp, confd_iter_op op, confd_value_t* /*oldv*/,
                     confd_value_t* newv, void* state) {
  auto& gauges = *static_cast<Gauges*>(state);
  if (kp->len == 2) {
    const uint32_t id = CONFD_GET_UINT32(&kp->v[0][0]);
    EXPECT_EQ(gauges.contains(id), op != MOP_CREATED) << id;
    if (op == MOP_CREATED) gauges[id] = {};
    if (op == MOP_DELETED) gauges.erase(id);
    return ITER_RECURSE;
  }
  const uint32_t id = CONFD_GET_UINT32(&kp->v[1][0]);
  const std::string leaf = confd_hash2str(CONFD_GET_XMLTAG(&kp->v[0][0]));
  if (op == MOP_VALUE_SET) {
    char text[32];
    confd_pp_value(text, sizeof(text), newv);
    gauges.at(id)[leaf] = text;
  } else {
    EXPECT_EQ(gauges.at(id).erase(leaf), 1u);
  }
  return ITER_RECURSE;
}

TEST_F(DiffTest, AppliedToRunningGivesTheCandidate) {
  std::mt19937 random(1);
  for (int round = 0; round < 300; ++round) {
    Gauges running = RandomGauges(random);
    const Gauges candidate = RandomGauges(random);
    Open(Json(running), Json(candidate));
    ASSERT_EQ(maapi_diff_iterate(sock_, thandle_, Apply, 0, &running), CONFD_OK);
    ASSERT_EQ(running, candidate) << "round " << round;
  }
}

std::string NotesJson(const std::vector<int>& ids) {
  std::string notes;
  for (const int id : ids) {
    notes += std::string(notes.empty() ? "" : ",") + "{\"id\":\"" + std::to_string(id) + "\"}";
  }
  return R"({"store-sample:room":{"shelf":[{"name":"s","note":[)" + notes + "]}]}}";
}

struct Moves {
  std::vector<int> order;
  int count = 0;
};

confd_iter_ret Move(confd_hkeypath_t* kp, confd_iter_op op, confd_value_t* /*oldv*/,
                    confd_value_t* newv, void* state) {
  EXPECT_EQ(op, MOP_MOVED_AFTER);
  auto& moves = *static_cast<Moves*>(state);
  const int id = std::stoi(CONFD_GET_CBUFPTR(&kp->v[0][0]));
  std::erase(moves.order, id);
  auto place = moves.order.begin();
  if (newv != nullptr) {
    place = std::find(moves.order.begin(), moves.order.end(), std::stoi(CONFD_GET_CBUFPTR(newv)));
    EXPECT_NE(place, moves.order.end());
    ++place;
  }
  moves.order.insert(place, id);
  ++moves.count;
  return ITER_RECURSE;
}

// Entries that need not move: the longest run that both orders have in common.
int LongestCommonRun(const std::vector<int>& a, const std::vector<int>& b) {
  std::vector<std::vector<int>> longest(a.size() + 1, std::vector<int>(b.size() + 1, 0));
  for (size_t i = 1; i <= a.size(); ++i) {
    for (size_t j = 1; j <= b.size(); ++j) {
      longest[i][j] = a[i - 1] == b[j - 1] ? longest[i - 1][j - 1] + 1
                                           : std::max(longest[i - 1][j], longest[i][j - 1]);
    }
  }
  return longest[a.size()][b.size()];
}

TEST_F(DiffTest, MovesAreTheFewestAndLeadToTheOrderOfTheCandidate) {
  std::mt19937 random(2);
  for (int round = 0; round < 200; ++round) {
    std::vector<int> running = {0, 1, 2, 3, 4, 5, 6};
    std::vector<int> candidate = running;
    std::shuffle(running.begin(), running.end(), random);
    std::shuffle(candidate.begin(), candidate.end(), random);
    Open(NotesJson(running), NotesJson(candidate));
    Moves moves{running};
    ASSERT_EQ(maapi_keypath_diff_iterate(sock_, thandle_, Move, 0, &moves, "/room/shelf{s}/note"),
              CONFD_OK);
    ASSERT_EQ(moves.order, candidate) << "round " << round;
    ASSERT_EQ(moves.count, 7 - LongestCommonRun(running, candidate)) << "round " << round;
  }
}

// --- The model of the device
// ----------------------------------------------------------------------------------------

confd_iter_ret FirstLeafShape(confd_hkeypath_t* kp, confd_iter_op op, confd_value_t* /*oldv*/,
                              confd_value_t* newv, void* state) {
  if (op != MOP_VALUE_SET || CONFD_GET_XMLTAG(&kp->v[0][0]) != 0x4c5f3e78) return ITER_RECURSE;
  EXPECT_EQ(kp->len, 5);
  EXPECT_STREQ(CONFD_GET_CBUFPTR(&kp->v[1][0]), "7");
  EXPECT_EQ(CONFD_GET_XMLTAG(&kp->v[2][0]), 0x213f1a7au);
  EXPECT_STREQ(CONFD_GET_CBUFPTR(newv), "red");
  ++*static_cast<int*>(state);
  return ITER_STOP;
}

TEST(DeviceModel, VrfLeafOfAnL3InterfaceHasTheKeyInItsSecondElement) {
  const auto schema = store::Schema::Load(IPAV_SOURCE_DIR "/yang");
  confd::Database store(store::Snapshot::Empty(schema));
  const int thandle = store.StartTransaction(store::Snapshot::FromText(
      schema, R"({"velmor-config:config":{"interface":{"velmor-ip-app:l3":[
                  {"name":"7","vrf":"red"}]}}})"));
  const int sock = store.OpenSocket();
  store.Attach(sock, thandle);
  int seen = 0;
  EXPECT_EQ(
      maapi_keypath_diff_iterate(sock, thandle, FirstLeafShape, 0, &seen, "/config/interface/l3"),
      CONFD_OK);
  EXPECT_EQ(seen, 1);
  EXPECT_EQ(maapi_exists(sock, thandle, "/config/interface/ipapp:l3{7}/vrf"), 1);
  EXPECT_EQ(maapi_exists(sock, thandle, "/velmor-internal:internal/ospf-interface-l3"), 1);
}

}  // namespace
