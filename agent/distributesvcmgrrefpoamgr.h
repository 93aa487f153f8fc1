#pragma once

#include <ace/RW_Mutex.h>
#include <tao/ORB.h>
#include <tao/PortableServer/PortableServer.h>

#include <map>
#include <string>

#include "platform/export.h"

namespace NS_CORBA {

/// Keeps the POAs of distributed service managers under generated UUIDs, each until it is taken or released.
/// SavePoaRef and ReleasePOA may be called by any thread; GetPOAByPoaUUID takes no lock, so the bundle calls
/// it on one thread or guards it.
class QV_API DistriSvcMgrRefPoaMgr {
  public:
    /// The only instance, made by the first call. Null only when the creation lock can't be taken.
    static DistriSvcMgrRefPoaMgr* Instance();
    /// Deletes the instance with the references it holds. The POAs themselves live on.
    static void Destroy();

    /// Moves the reference out of `poa`, which is nil afterwards, and answers in `uuid` where it is kept.
    void SavePoaRef(std::string& uuid, TAO_Objref_Var_T<PortableServer::POA>& poa);

    /// Takes the reference kept under `uuid`: it moves into `poa` and the entry is gone. An unknown `uuid`
    /// leaves `poa` as it was.
    void GetPOAByPoaUUID(const std::string& uuid, TAO_Objref_Var_T<PortableServer::POA>& poa);

    /// Destroys the POA kept under `uuid` and drops the entry. When the POA can't be destroyed that is logged
    /// and the entry stays for another try. An unknown `uuid` is ignored.
    void ReleasePOA(const std::string& uuid);

  private:
    friend class DistriSvcMgrRefPoaMgrProbe;  // lets the unit tests make the lock fail

    DistriSvcMgrRefPoaMgr() = default;
    ~DistriSvcMgrRefPoaMgr() = default;
    DistriSvcMgrRefPoaMgr(const DistriSvcMgrRefPoaMgr&) = delete;
    DistriSvcMgrRefPoaMgr& operator=(const DistriSvcMgrRefPoaMgr&) = delete;

    static DistriSvcMgrRefPoaMgr* m_pInstance;

    ACE_RW_Mutex m_lock;
    std::map<std::string, TAO_Objref_Var_T<PortableServer::POA>> m_mapPoa;
};

}  // namespace NS_CORBA
