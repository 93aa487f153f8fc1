#pragma once

#include <cstddef>

/// The event types that the agent knows.
namespace NS_CORBA {

constexpr char kEventDomain[] = "tmf_mtnm";

constexpr char kAlarm[] = "NT_ALARM";
constexpr char kThresholdAlarm[] = "NT_TCA";
constexpr char kAlarmUpdated[] = "NT_ALARM_UPDATED";
constexpr char kHeartBeat[] = "NT_HEARTBEAT";
constexpr char kPulledFileTransfer[] = "NT_PULL_FILE_TRANSFER_STATUS";

struct EventType {
    const char* name;
    std::size_t offered;  // place among the types offered to the channel, from 1 on; 0 for a type that isn't
};

/// The types that may pass, in the order of their registration.
constexpr EventType kEventTypes[] = {
    {kAlarm, 1},
    {kThresholdAlarm, 2},
    {"NT_OBJECT_CREATION", 3},
    {"NT_OBJECT_DELETION", 4},
    {"NT_ATTRIBUTE_VALUE_CHANGE", 5},
    {"NT_STATE_CHANGE", 6},
    {"NT_ROUTE_CHANGE", 7},
    {"NT_PROTECTION_SWITCH", 8},
    {"NT_FILE_TRANSFER_STATUS", 9},
    {kPulledFileTransfer, 18},
    {"NT_EPROTECTION_SWITCH", 10},
    {"NT_IPPROTECTION_SWITCH", 0},
    {"NT_ASON_RESOURCE_CHANGE", 12},
    {"NT_PRBSTEST_STATUS", 13},
    {"NT_WDMPROTECTION_SWITCH", 14},
    {"NT_ATMPROTECTION_SWITCH", 15},
    {"NT_RPRPROTECTION_SWITCH", 16},
    {kHeartBeat, 11},
    {"NT_PERFORMANCE_TASK_CHANGE", 0},
    {"NT_QUERYHISTORYALARMS_STATUS", 19},
    {kAlarmUpdated, 17},
    {"NT_OAM_ETHSVR_LB_REPORT", 0},
    {"NT_OAM_ETHSVR_LB_STATISTIC_REPORT", 0},
    {"NT_OAM_ETHSVR_LT_REPORT", 0},
    {"NT_OAM_LSP_LB_REPORT", 0},
    {"NT_OAM_LSP_LT_REPORT", 0},
    {"NT_OAM_LSP_TEST_REPORT", 0},
    {"NT_OAM_PW_LB_REPORT", 0},
    {"NT_OAM_PW_LT_REPORT", 0},
    {"NT_OAM_PW_TEST_REPORT", 0},
    {"NT_TNP_SWITCH", 0},
    {"NT_ALARM_ACKNOWLEDGE", 20},
    {"NT_LOGIN", 0},
    {"NT_LOGOUT", 0},
};

constexpr std::size_t CountOfferedTypes() {
    std::size_t count = 0;
    for (const EventType& type : kEventTypes) {
        count += type.offered != 0 ? 1 : 0;
    }
    return count;
}

/// Every place from 1 to the number of offered types is taken once: what the offer's building relies on.
constexpr bool OfferedPlacesAreDense() {
    for (std::size_t place = 1; place <= CountOfferedTypes(); ++place) {
        std::size_t taken = 0;
        for (const EventType& type : kEventTypes) {
            taken += type.offered == place ? 1 : 0;
        }
        if (taken != 1) {
            return false;
        }
    }
    return true;
}
static_assert(OfferedPlacesAreDense(), "each place of the offer needs exactly one type");

}  // namespace NS_CORBA
