#pragma once

#include <tao/PortableServer/PortableServer.h>

#include <mutex>

#include "demo/agent/ems.h"
#include "globaldefsS.h"
#include "managedElementS.h"

namespace qv_demo {

/// The lists that are handed out page by page: what each consists of and how an element becomes an entry of
/// it.
struct ElementPages {
    using Skeleton = POA_managedElement::ManagedElementIterator_I;
    using Iterator = managedElement::ManagedElementIterator_I;
    using IteratorOut = managedElement::ManagedElementIterator_I_out;
    using List = managedElement::ManagedElementList_T;
    using ListVar = managedElement::ManagedElementList_T_var;
    using ListOut = managedElement::ManagedElementList_T_out;
    static void Set(managedElement::ManagedElement_T& entry, const std::string& ems, const Element& element);
};

struct NamePages {
    using Skeleton = POA_globaldefs::NamingAttributesIterator_I;
    using Iterator = globaldefs::NamingAttributesIterator_I;
    using IteratorOut = globaldefs::NamingAttributesIterator_I_out;
    using List = globaldefs::NamingAttributesList_T;
    using ListVar = globaldefs::NamingAttributesList_T_var;
    using ListOut = globaldefs::NamingAttributesList_T_out;
    static void Set(globaldefs::NamingAttributes_T& entry, const std::string& ems, const Element& element);
};

/// Hands out the rest of a list. Calls of one iterator take turns.
template <class Pages>
class PageIterator : public Pages::Skeleton {
  public:
    // Out of line: inlined, GCC 12 with sanitizers takes the skeleton's virtual base for an access out of
    // bounds.
    [[gnu::noinline]] PageIterator(const Ems& ems, SessionId session, IteratorId id, std::size_t position);

    CORBA::Boolean next_n(CORBA::ULong how_many, typename Pages::ListOut list) override;
    CORBA::ULong getLength() override;
    void destroy() override;

  private:
    void Touch();

    const Ems& ems_;
    const SessionId session_;
    const IteratorId id_;
    std::mutex mutex_;
    std::size_t position_;
};

/// The first page of a list and, where it doesn't hold everything, an iterator for the rest, which lives in
/// the session's adapter for iterators. Instantiated for ElementPages and NamePages.
template <class Pages>
void FirstPage(const Ems& ems, const Session& session, CORBA::ULong how_many, typename Pages::ListOut list,
               typename Pages::IteratorOut iterator);

}  // namespace qv_demo
