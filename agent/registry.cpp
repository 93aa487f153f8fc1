#include <ace/Guard_T.h>

#include "agent/corbabaseagentconfig.h"
#include "agent/manager_registry.h"
#include "logging/corbalogutil.h"

namespace NS_CORBA {

void CorbaBaseAgentConfig::_add_ref() {
    ACE_Guard<ACE_Thread_Mutex> guard(m_mutex);
    ++m_refCount;
}

void CorbaBaseAgentConfig::_remove_ref() {
    ACE_Guard<ACE_Thread_Mutex> guard(m_mutex);
    --m_refCount;
}

void CorbaBaseAgentConfig::RegisterMgr(const char* name, MgrFactory* factory) {
    m_mapNorthMgr[std::string(name)] = factory;
    _add_ref();
}

void CorbaBaseAgentConfig::UnregisterMgr(const char* name) {
    m_mapNorthMgr.erase(std::string(name));
    _remove_ref();
}

MgrFactory* CorbaBaseAgentConfig::GetNorthMgr(const char* name) {
    const auto found = m_mapNorthMgr.find(std::string(name));
    return found == m_mapNorthMgr.end() ? nullptr : found->second;
}

std::map<std::string, MgrFactory*>& CorbaBaseAgentConfig::GetNorthMgrMap() {
    return m_mapNorthMgr;
}

std::list<CorbaI*>* CorbaBaseAgentConfig::GetMGRList() {
    return m_mutex.acquire() == 0 ? &m_listMGR : nullptr;
}

void CorbaBaseAgentConfig::FreeMGRList() {
    m_mutex.release();
}

int CorbaBaseAgentConfig::RegisterModule(CorbaI* module) {
    std::list<CorbaI*>* modules = GetMGRList();
    if (modules == nullptr) {
        return -1;
    }
    modules->push_back(module);
    FreeMGRList();
    _add_ref();
    return 0;
}

void CorbaBaseAgentConfig::UnRegisterModule(CorbaI* module) {
    std::list<CorbaI*>* modules = GetMGRList();
    if (modules == nullptr) {
        return;
    }
    modules->remove(module);
    FreeMGRList();
    _remove_ref();
}

std::map<std::string, std::string> CorbaBaseAgentConfig::GetDisconnectMap() {
    return m_DisconnectAlarmMapInfo;
}

void CorbaBaseAgentConfig::SetDisconnectMap(const std::string& key, const std::string& value) {
    m_DisconnectAlarmMapInfo[key] = value;
    TA_POS;
    TaDebugWithPara(3, "断连告警缓存m_DisconnectAlarmMapInfo加入key = %s,value=%s", key.c_str(),
                    value.c_str());
}

void CorbaBaseAgentConfig::SetReqInterceptorImpl(RequestInterceptorBase* impl) {
    ACE_Write_Guard<ACE_RW_Mutex> guard(m_rwLock);
    m_pReqInterceptorImpl = impl;
}

RequestInterceptorBase* CorbaBaseAgentConfig::GetReqInterceptorImpl() {
    ACE_Read_Guard<ACE_RW_Mutex> guard(m_rwLock);
    return m_pReqInterceptorImpl;
}

CorbaI::CorbaI() {
    CorbaBaseAgentConfig::Instance()->RegisterModule(this);
}

CorbaI::~CorbaI() {
    try {
        CorbaBaseAgentConfig::Instance()->UnRegisterModule(this);
    } catch (...) {
        // A module that can't leave the list must not end the process of whoever destroys it.
    }
}

}  // namespace NS_CORBA
