#include "logging/logmgr.h"

namespace NS_CORBA {

void CorbaLogMgr::InitIfNameToParamPos() {
    m_IfNameToParamPos["getEmsSession"] = {1};
    m_IfNameToParamPos["getHistoryPMData"] = {2};
    m_IfNameToParamPos["getAllAlarmsByFTP"] = {2};
    m_IfNameToParamPos["modifyPassword"] = {1, 2};
    m_IfNameToParamPos["createPMCollectionTask"] = {3};
    m_IfNameToParamPos["getAllHistoryAlarmsByFTP"] = {2};
    m_IfNameToParamPos["getAllMicrowaveLinksReport"] = {2};
    m_IfNameToParamPos["getNMorEmManager"] = {1, 3};
    m_IfNameToParamPos["ping"] = {0};
    m_IfNameToParamPos["planGateway"] = {0};
    m_IfNameToParamPos["getExchangeRsaPublicKey"] = {0};
    m_IfNameToParamPos["GetSTFromGWByUserInfo"] = {1, 4};
    m_IfNameToParamPos["Push_events"] = {0};
}

}  // namespace NS_CORBA
