#pragma once

#include "platform/export.h"

namespace NS_BUNDLEMGR1 {

/// Common base of every service that a bundle can offer. It exists so that the interface which a service
/// object hands out can be cast dynamically to the service wanted.
class QV_API ServiceInterface {
  public:
    virtual ~ServiceInterface() = default;

  protected:
    /// For who implements a service; the base holds nothing.
    /// @{
    ServiceInterface() = default;
    ServiceInterface(const ServiceInterface&) = default;
    ServiceInterface& operator=(const ServiceInterface&) = default;
    /// @}
};

}  // namespace NS_BUNDLEMGR1
