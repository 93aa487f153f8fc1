#include "platform/call_chain.h"

#include <atomic>
#include <exception>
#include <map>
#include <mutex>

#include "standalone/call_chain_settings.h"
#include "standalone/report.h"
#include "standalone/span_id.h"
#include "standalone/span_recorder.h"

namespace qv_standalone {
namespace {

/// Longest that the end of the process waits for spans on their way.
constexpr std::chrono::milliseconds kEndLimit{900};

class CallChain final : public xDENcommon::xDENCallChainInst {
  public:
    CallChain(std::string name, SpanRecorder& recorder, CallChain* next)
        : m_name(std::move(name)), m_recorder(recorder), m_next(next) {}

    int SetCallChainInfo(const std::string& traceId, const std::string& parentId,
                         const std::string& spanId) override {
        if (traceId.empty() || spanId.empty()) {
            return -1;
        }
        Current() = {traceId, parentId, spanId};
        return 0;
    }
    std::string GetTraceId() override { return Current().trace; }
    std::string GetParentId() override { return Current().parent; }
    std::string GetSpanId() override { return Current().span; }
    int ReportSpan(const Json::Value& span, const Json::Value& extra) override {
        return m_recorder.Report(span, extra);
    }

    const std::string& Name() const { return m_name; }
    CallChain* Next() const { return m_next; }

  private:
    struct Ids {
        std::string trace;
        std::string parent;
        std::string span;
    };

    Ids& Current() const {
        thread_local std::map<const CallChain*, Ids> ids;
        return ids[this];
    }

    const std::string m_name;
    SpanRecorder& m_recorder;
    CallChain* const m_next;
};

/// The call chains of this process, which are never destroyed: requests may be under way to the very end.
class CallChains {
  public:
    explicit CallChains(const SpanRecorderOptions& options) : m_recorder(options, Report) {}

    CallChain* Of(const std::string& name) {
        CallChain* const first = m_first.load(std::memory_order_acquire);
        CallChain* const found = Find(first, name);
        return found != nullptr ? found : Add(name);
    }

    SpanRecorder& Recorder() { return m_recorder; }

  private:
    static CallChain* Find(CallChain* chain, const std::string& name) {
        while (chain != nullptr && chain->Name() != name) {
            chain = chain->Next();
        }
        return chain;
    }

    CallChain* Add(const std::string& name) {
        const std::lock_guard<std::mutex> guard(m_lock);
        CallChain* const first = m_first.load(std::memory_order_relaxed);
        if (CallChain* const found = Find(first, name)) {
            return found;
        }
        auto* const added = new CallChain(name, m_recorder, first);
        m_first.store(added, std::memory_order_release);
        return added;
    }

    SpanRecorder m_recorder;
    std::mutex m_lock;                         // serialises Add
    std::atomic<CallChain*> m_first{nullptr};  // a list that only grows
};

/// At the end of the process, sees that what was reported is written.
struct EndOfProcess {
    CallChains* chains = nullptr;
    ~EndOfProcess() {
        if (chains != nullptr) {
            chains->Recorder().Stop(kEndLimit);
        }
    }
};

/// Null when tracing is off.
CallChains* MakeCallChains() {
    try {
        const CallChainSettings settings = ReadCallChainSettings();
        if (!settings.on) {
            return nullptr;
        }
        auto* const chains = new CallChains(settings.recorder);
        // Made after the libraries that the recorder uses are set up, so that it goes ahead of them.
        static EndOfProcess end;
        end.chains = chains;
        return chains;
    } catch (const std::exception& error) {
        Report(std::string("requests are not traced (") + error.what() + ")");
        return nullptr;
    }
}

}  // namespace
}  // namespace qv_standalone

namespace xDENcommon {

xDENCallChainInst* xDENCallChainInstMgr::Instance(const std::string& name) {
    static qv_standalone::CallChains* const chains = qv_standalone::MakeCallChains();
    return chains == nullptr ? nullptr : chains->Of(name);
}

std::string xDENCallChainHelper::GenerateCCUUID() {
    return qv_standalone::NewSpanId();
}

}  // namespace xDENcommon
