#include "plugin_session.h"

#include <cxxabi.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <typeinfo>
#include <utility>

#include "confd/call_count.h"
#include "confd/keypath.h"
#include "confd/transaction.h"
#include "confd_maapi.h"
#include "framework/host.h"
#include "plugin.h"
#include "store/schema.h"

namespace ipvald {
namespace {

constexpr int kNameSize = 256;  // bytes for the plug-in's context name

std::string TypeName(const std::type_info* type) {
  if (type == nullptr) return "an unknown type";
  int status = 0;
  const std::unique_ptr<char, void (*)(void*)> name(
      abi::__cxa_demangle(type->name(), nullptr, nullptr, &status), std::free);
  return status == 0 ? name.get() : type->name();
}

// The database and the daemon around the plug-in for one transaction.
class Session {
 public:
  explicit Session(const PluginTask& task)
      : schema_(task.candidate->schema()),
        database_(task.running),
        daemon_{database_.OpenSocket(), database_.OpenSocket()},
        thandle_(database_.StartTransaction(task.candidate)) {
    database_.Attach(daemon_.maapi_socket, thandle_);
    confd_trans_ctx* tctx = context_.get();
    tctx->mode = CONFD_READ_WRITE;
    tctx->dbname = CONFD_RUNNING;
    tctx->thandle = thandle_;
    tctx->validation_info = CONFD_VALIDATION_FLAG_TEST;
    tctx->vcb_opaque = &daemon_;
    tctx->v_opaque = &registry_;
  }

  void Register(const std::string& name, void* context) { registry_.Register(name, context); }

  EndRecord Call(const Plugin& plugin, const confd::ValidationCall& call) {
    confd::Keypath keypath = KeypathOf(schema_, call);
    confd_value_t new_value = NewValue(call, keypath);
    std::string opaque = call.point->opaque;
    context_.ClearError();
    context_.get()->validate_opaque = opaque.data();

    EndRecord end;
    const uint64_t calls_before = confd::CallCount();
    const auto begin = std::chrono::steady_clock::now();
    end.result = plugin.validate(context_.get(), keypath.get(), &new_value);
    const auto elapsed = std::chrono::steady_clock::now() - begin;
    end.datastore_calls = confd::CallCount() - calls_before;
    end.microseconds = static_cast<uint64_t>(
        std::chrono::duration_cast<std::chrono::microseconds>(elapsed).count());

    context_.get()->validate_opaque = nullptr;
    confd_free_value(&new_value);
    if (context_.has_error()) end.text = context_.error();
    end.log = framework::TakeLogLines();
    for (framework::Fault& fault : framework::TakeFaults()) {
      end.faults.push_back({fault.level, std::move(fault.function), std::move(fault.file),
                            fault.line, std::move(fault.message)});
    }
    return end;
  }

  uint32_t Finish() { return static_cast<uint32_t>(database_.FinishTransaction(thandle_)); }

 private:
  // The value of a leaf; the node's tag where there is none, since the plug-in refuses a null
  // pointer.
  confd_value_t NewValue(const confd::ValidationCall& call, confd::Keypath& keypath) const {
    confd_value_t value{};
    const auto tag = schema_.tag(call.point->node);
    CONFD_SET_XMLTAG(&value, tag.tag, tag.ns);
    if (call.instance != nullptr) {
      // Fails for what is no leaf and then leaves the tag alone.
      maapi_get_elem(daemon_.maapi_socket, thandle_, &value, "%h", keypath.get());
    }
    return value;
  }

  const store::Schema& schema_;
  confd::Database database_;
  framework::Daemon daemon_;
  framework::ContextRegistry registry_;
  confd::TransactionContext context_;
  int thandle_;
};

// An entry point other than validate did not return 0.
class EntryPointFailed : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

void CheckZero(int result, const std::string& entry_point) {
  if (result != 0) throw EntryPointFailed(entry_point + " returned " + std::to_string(result));
}

// Returns the number of cursors that the plug-in left open.
uint32_t MakeCalls(const PluginTask& task, const std::function<void(const Record&)>& send) {
  send(StageRecord{"loading"});
  Plugin plugin(task.plugin);
  framework::SetLogEnabled(task.log);
  Session session(task);

  send(StageRecord{"get_validation_point"});
  std::array<char, kNameSize> name{};
  CheckZero(plugin.get_validation_point(name.data(), kNameSize), "get_validation_point");
  name.back() = '\0';

  send(StageRecord{"lib_init"});
  void* context = nullptr;
  CheckZero(plugin.lib_init(&context), "lib_init");
  session.Register(name.data(), context);

  for (uint32_t i = 0; i < task.calls.size(); ++i) {
    send(BeginRecord{i});
    EndRecord end = session.Call(plugin, task.calls[i]);
    end.call = i;
    send(end);
    if (end.result != CONFD_OK && end.result != CONFD_VALIDATION_WARN) break;
  }

  send(StageRecord{"lib_finish"});
  CheckZero(plugin.lib_finish(&context), "lib_finish");
  const uint32_t open_cursors = session.Finish();
  send(StageRecord{"unloading"});
  plugin.Unload();
  return open_cursors;
}

}  // namespace

void RunPluginSession(const PluginTask& task, const std::function<void(const Record&)>& send) {
  try {
    send(DoneRecord{MakeCalls(task, send)});
  } catch (const UnusablePlugin& error) {
    send(UnusableRecord{error.what()});
  } catch (const EntryPointFailed& error) {
    send(FailedRecord{error.what()});
  } catch (const std::exception& error) {
    send(FailedRecord{"exception " + TypeName(&typeid(error)) + ": " + error.what()});
  } catch (...) {
    send(FailedRecord{"exception of type " + TypeName(abi::__cxa_current_exception_type())});
  }
}

}  // namespace ipvald
