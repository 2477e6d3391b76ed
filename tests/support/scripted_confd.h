// The ConfD of a test: it answers what the test scripts, and records what it is asked.
//
// The functions that scripted_confd.cc defines win over those of libconfd in the program that links
// it, also for the module that the program loads. What has no answer goes on to libconfd, so that a
// test scripts only what the configuration store cannot give:
//
//   tests::ScriptedConfd scripted;
//   scripted.answers["/config/interface/l3{7}/vrf"] = {.exists = 2};
//   EXPECT_EQ(Validate("intf_vrf_validation", "/config/interface/l3"), "accepted");
//   EXPECT_THAT(scripted.formats, Contains("maapi_exists /config/interface/l3{%s}/vrf"));
#ifndef TESTS_SUPPORT_SCRIPTED_CONFD_H_
#define TESTS_SUPPORT_SCRIPTED_CONFD_H_

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "confd_dp.h"
#include "confd_lib.h"
#include "confd_maapi.h"

namespace tests {

/// What the calls with one path answer.
struct Answer {
  std::optional<int> exists = {};  ///< result of maapi_exists
  std::optional<int> read = {};    ///< result of a read; CONFD_OK when there is only a value
  std::optional<confd_value_t> value = {};  ///< what the read stores, a copy; whatever its result
};

/// What maapi_xpath_eval_expr answers.
struct XPathAnswer {
  int result = CONFD_OK;
  std::optional<std::string> text = {};  ///< none: a null pointer
};

/// In force while it lives; one at a time.
class ScriptedConfd {
 public:
  /// What becomes of a call that has no answer: it goes on to libconfd, or nothing exists, reads
  /// fail and leave their argument alone, and error texts are only kept here.
  enum class Unscripted { kGoesOn, kFails };

  explicit ScriptedConfd(Unscripted unscripted = Unscripted::kGoesOn);
  ~ScriptedConfd();
  ScriptedConfd(const ScriptedConfd&) = delete;
  ScriptedConfd& operator=(const ScriptedConfd&) = delete;

  // The script ---------------------------------------------------------------------------------

  std::map<std::string, Answer> answers;    ///< by formatted path
  std::map<std::string, Answer> committed;  ///< the same for reads of CDB

  /// What confd_pp_value prints instead of a text; a text that is not here stays.
  std::map<std::string, std::string> printed_instead;

  std::optional<XPathAnswer> xpath;

  /// Takes the place of maapi_keypath_diff_iterate: the callback and its state.
  std::function<int(maapi_iterate_fn iter, void* state)> on_iterate;

  /// Changes the entry that a step of a cursor delivered.
  std::function<void(maapi_cursor& entry)> on_entry;

  /// Runs after a call was recorded and before it is carried out, and may throw.
  std::function<void(std::string_view function)> on_call;

  // The record, whoever answered ---------------------------------------------------------------

  /// Reads, questions for existence, and cursors: function, blank, format as passed.
  std::vector<std::string> formats;

  /// Formats of error texts as passed, one for each call of confd_trans_seterr; the text that was
  /// set last, and the transaction that it was set for.
  std::vector<std::string> error_formats;
  std::optional<std::string> error;
  const confd_trans_ctx* refused = nullptr;

  /// Returns and clears these two, in the order in which they were made, such as
  ///   maapi_exists(<socket>, <transaction handle>, "<format as passed>")
  ///   confd_trans_seterr("<format as passed>")
  std::vector<std::string> TakeCalls();

  struct Expression {
    int sock;
    int thandle;
    std::string text;
    bool traced;
    std::string context;  ///< as passed: a format
  };
  std::vector<Expression> expressions;

  struct Iteration {
    int sock;
    int thandle;
    int flags;
    void* state;
    std::string path;
  };
  std::vector<Iteration> iterations;

  /// As the last step left it; its `walk` is null once a cursor was destroyed.
  maapi_cursor cursor{};

  // Of the functions in scripted_confd.cc.
  bool fails() const { return unscripted_ == Unscripted::kFails; }
  void Record(const std::string& function, const std::string& arguments);

 private:
  Unscripted unscripted_;
  std::vector<std::string> calls_;
};

/// Values for answers.
confd_value_t Int32(int32_t number);
confd_value_t Uint16(uint16_t number);
confd_value_t Uint32(uint32_t number);

}  // namespace tests

#endif  // TESTS_SUPPORT_SCRIPTED_CONFD_H_
