#pragma once

#include <tao/PortableServer/PortableServer.h>

#include <algorithm>
#include <mutex>

#include "demo/agent/element_mapping.h"
#include "demo/agent/ems.h"
#include "demo/agent/failure.h"
#include "globaldefsS.h"
#include "managedElementS.h"

namespace qv_demo {

/// The lists that are handed out page by page: how each is called and how an element becomes an entry of it.
struct ElementPages {
    using Skeleton = POA_managedElement::ManagedElementIterator_I;
    using Iterator = managedElement::ManagedElementIterator_I;
    using List = managedElement::ManagedElementList_T;
    using ListVar = managedElement::ManagedElementList_T_var;
    using ListOut = managedElement::ManagedElementList_T_out;
    static void Set(managedElement::ManagedElement_T& entry, const std::string& ems, const Element& element) {
        ToManagedElement(entry, ems, element);
    }
};

struct NamePages {
    using Skeleton = POA_globaldefs::NamingAttributesIterator_I;
    using Iterator = globaldefs::NamingAttributesIterator_I;
    using List = globaldefs::NamingAttributesList_T;
    using ListVar = globaldefs::NamingAttributesList_T_var;
    using ListOut = globaldefs::NamingAttributesList_T_out;
    static void Set(globaldefs::NamingAttributes_T& entry, const std::string& ems, const Element& element) {
        SetElementName(entry, ems, element.name);
    }
};

/// At most `count` entries from position `first` on; the caller owns the list.
template <class Pages>
typename Pages::List* ReadPage(const Ems& ems, std::size_t first, std::size_t count) {
    const std::size_t rest = ems.inventory.size() - std::min(first, ems.inventory.size());
    typename Pages::ListVar list = new typename Pages::List;
    list->length(static_cast<CORBA::ULong>(std::min(count, rest)));
    CORBA::ULong next = 0;
    ems.inventory.ForRange(first, count,
                           [&](const Element& element) { Pages::Set(list[next++], ems.name, element); });
    return list._retn();
}

/// Hands out the rest of a list. Calls of one iterator take turns.
template <class Pages>
class PageIterator : public Pages::Skeleton {
  public:
    PageIterator(const Ems& ems, SessionId session, IteratorId id, std::size_t position)
        : ems_(ems), session_(session), id_(id), position_(position) {}

    CORBA::Boolean next_n(CORBA::ULong how_many, typename Pages::ListOut list) override {
        const std::lock_guard<std::mutex> guard(mutex_);
        Touch();
        if (how_many == 0) {
            Fail(globaldefs::EXCPT_INVALID_INPUT, "how_many must not be 0");
        }
        list = ReadPage<Pages>(ems_, position_, how_many);
        position_ = std::min<std::size_t>(position_ + how_many, ems_.inventory.size());
        const bool more = position_ < ems_.inventory.size();
        if (!more) {
            ems_.iterators.Close(id_);
        }
        return more;
    }

    CORBA::ULong getLength() override {
        Touch();
        return static_cast<CORBA::ULong>(ems_.inventory.size());
    }

    void destroy() override {
        Touch();
        ems_.iterators.Close(id_);
    }

  private:
    void Touch() {
        ems_.sessions.Touch(session_);
        ems_.iterators.Touch(id_);
    }

    const Ems& ems_;
    const SessionId session_;
    const IteratorId id_;
    std::mutex mutex_;
    std::size_t position_;
};

/// The first page of a list and, where it doesn't hold everything, an iterator for the rest, which lives in
/// the session's adapter for iterators.
template <class Pages, class IteratorOut>
void FirstPage(const Ems& ems, const Session& session, CORBA::ULong how_many, typename Pages::ListOut list,
               IteratorOut iterator) {
    typename Pages::Iterator::_var_type rest = Pages::Iterator::_nil();
    if (how_many < ems.inventory.size()) {
        // First of all, so that a refusal costs nothing.
        const IteratorId id = ems.iterators.Open(session.id);
        PortableServer::ServantBase_var servant = new PageIterator<Pages>(ems, session.id, id, how_many);
        const CORBA::Object_var reference = ems.iterators.Place(id, session.poas.iterator.in(), servant.in());
        rest = Pages::Iterator::_narrow(reference.in());
    }
    list = ReadPage<Pages>(ems, 0, how_many);
    iterator = rest._retn();
}

}  // namespace qv_demo
