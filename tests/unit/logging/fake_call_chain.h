#pragma once

#include <json/value.h>

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "platform/call_chain.h"

namespace qv_test {

/// A call chain that keeps what it is told. Ids are per thread, as in the platform's library.
class FakeCallChain final : public xDENcommon::xDENCallChainInst {
  public:
    struct Ids {
        std::string trace;
        std::string parent;
        std::string span;
    };

    int refusal = 0;                 ///< what SetCallChainInfo answers; the ids are taken only with 0
    std::function<void()> onReport;  ///< called in ReportSpan; may raise

    int SetCallChainInfo(const std::string& traceId, const std::string& parentId,
                         const std::string& spanId) override {
        if (refusal == 0) {
            Current() = {traceId, parentId, spanId};
        }
        const std::lock_guard<std::mutex> lock(m_lock);
        m_set.push_back({traceId, parentId, spanId});
        return refusal;
    }
    std::string GetTraceId() override { return Current().trace; }
    std::string GetParentId() override { return Current().parent; }
    std::string GetSpanId() override { return Current().span; }

    int ReportSpan(const Json::Value& span, const Json::Value& extra) override {
        if (onReport) {
            onReport();
        }
        const std::lock_guard<std::mutex> lock(m_lock);
        m_spans.push_back(span);
        m_extras.push_back(extra);
        return -1;  // nobody looks at it
    }

    static Ids& Current() {
        thread_local Ids ids;
        return ids;
    }

    std::vector<Ids> Set() const { return Copy(m_set); }
    std::vector<Json::Value> Spans() const { return Copy(m_spans); }
    std::vector<Json::Value> Extras() const { return Copy(m_extras); }

  private:
    template <class T>
    std::vector<T> Copy(const std::vector<T>& list) const {
        const std::lock_guard<std::mutex> lock(m_lock);
        return list;
    }

    mutable std::mutex m_lock;
    std::vector<Ids> m_set;
    std::vector<Json::Value> m_spans;
    std::vector<Json::Value> m_extras;
};

/// What this program's own definitions of the call chain library do.
struct CallChainLibrary {
    xDENcommon::xDENCallChainInst* instance = nullptr;  ///< null: tracing is off
    std::function<std::string()> newId;                 ///< empty: "id-1", "id-2" and so on
};
extern CallChainLibrary g_callChain;

/// The names that Instance was asked for since the last call of this.
std::vector<std::string> TakeCallChainNames();

}  // namespace qv_test
