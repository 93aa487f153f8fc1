#pragma once

#include <tao/ORB.h>
#include <tao/PortableServer/PortableServer.h>

#include "platform/export.h"

namespace NS_CORBA {

/// Makes one kind of northbound manager. The agent bundle implements it and registers it by name with
/// CorbaBaseAgentConfig::RegisterMgr; the library stores the pointer, never calls it and never deletes it.
class QV_API MgrFactory {
  public:
    virtual ~MgrFactory() = default;

    /// Makes the manager's servant in `poa` and returns a new reference to it, which the caller releases.
    /// Nil when the manager can't be had.
    virtual CORBA::Object* CreateMgr(PortableServer::POA* poa) = 0;
};

/// Base of a bundle's module: it enters itself into the module list of CorbaBaseAgentConfig when it is
/// constructed and leaves it when it is destroyed. The list never owns a module. Modules are made and
/// destroyed on one thread at a time; the list itself is guarded (CorbaBaseAgentConfig::GetMGRList).
class QV_API CorbaI {
  public:
    /// Enters the module into the list. When the list can't be locked it stays outside.
    CorbaI();
    CorbaI(const CorbaI&) = delete;
    CorbaI& operator=(const CorbaI&) = delete;
    /// Takes the module out of the list.
    virtual ~CorbaI() = 0;

    /// For the bundle to drive its modules with; the library calls none of them.
    /// @{
    virtual bool Init() = 0;
    virtual bool Start() = 0;
    virtual void Stop() = 0;
    /// @}
};

}  // namespace NS_CORBA
