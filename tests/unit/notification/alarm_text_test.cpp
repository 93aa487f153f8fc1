#include <sstream>

#include "notification/supplier.h"
#include "tests/unit/agent/agent_fixture.h"
#include "tests/unit/notification/noting_callback.h"

namespace qv_test {
namespace {

using AlarmText = AgentTest;

TEST_F(AlarmText, ComesFromTheSuppliersCallbackObject) {
    NotingCallBack callback;
    callback.alarmText = "{alarm}";
    NS_CORBA::SuppilerMgr& supplier = *NS_CORBA::SuppilerMgr::Instance();
    supplier.m_pCallBackObj = &callback;
    std::stringstream out;
    config().ConvertTMFAlarmEventToStr(out, CosNotification::StructuredEvent());
    supplier.m_pCallBackObj = nullptr;
    EXPECT_EQ("{alarm}", out.str());
    EXPECT_EQ(NotingCallBack::Calls{"text"}, callback.Seen());
}

TEST_F(AlarmText, IsEmptyWithoutACallbackObject) {
    std::stringstream out;
    config().ConvertTMFAlarmEventToStr(out, CosNotification::StructuredEvent());
    EXPECT_EQ("", out.str());
    EXPECT_EQ(1, CountLog(kSys, "[SuppilerMgr::StructuredEventToStr] CallBackObj is null"));
}

}  // namespace
}  // namespace qv_test
