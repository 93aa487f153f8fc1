#include "agent/distributesvcmgrrefpoamgr.h"

#include <ace/Guard_T.h>

#include "agent/singleton.h"
#include "logging/corbalogutil.h"
#include "orb/portability.h"
#include "platform/thread_context.h"

namespace NS_CORBA {

DistriSvcMgrRefPoaMgr* DistriSvcMgrRefPoaMgr::m_pInstance = nullptr;

DistriSvcMgrRefPoaMgr* DistriSvcMgrRefPoaMgr::Instance() {
    return CreateOnce(m_pInstance, [] { return new DistriSvcMgrRefPoaMgr; });
}

void DistriSvcMgrRefPoaMgr::Destroy() {
    if (LoadInstance(m_pInstance) == nullptr) {
        return;
    }
    const SingletonGuard guard(*ACE_Static_Object_Lock::instance());
    delete TakeInstance(m_pInstance);
}

void DistriSvcMgrRefPoaMgr::SavePoaRef(std::string& uuid, TAO_Objref_Var_T<PortableServer::POA>& poa) {
    ACE_Write_Guard<ACE_RW_Mutex> guard(m_lock);
    uuid = NS_UTIL::ThreadContextInfo::GenerateUUID();
    m_mapPoa[uuid] = poa._retn();
}

void DistriSvcMgrRefPoaMgr::GetPOAByPoaUUID(const std::string& uuid,
                                            TAO_Objref_Var_T<PortableServer::POA>& poa) {
    const auto found = m_mapPoa.find(uuid);
    if (found == m_mapPoa.end()) {
        return;
    }
    if (CORBA::is_nil(found->second.in())) {
        TA_POS;
        TaTrace("[DistriSvcMgrRefPoaMgr::GetPOAByPoaUUID] POA is NULL!");
    }
    poa = found->second._retn();
    m_mapPoa.erase(found);
}

void DistriSvcMgrRefPoaMgr::ReleasePOA(const std::string& uuid) {
    ACE_Write_Guard<ACE_RW_Mutex> guard(m_lock);
    const auto found = m_mapPoa.find(uuid);
    if (found == m_mapPoa.end()) {
        return;
    }
    try {
        found->second->destroy(true, false);
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaDebugWithPara(1, "[DistriSvcMgrRefPoaMgr::ReleasePOA] Exception caught in destroy POA, ex=%s",
                        qv_orb::ExceptionText(ex).c_str());
        return;
    }
    m_mapPoa.erase(found);
}

}  // namespace NS_CORBA
