#include "demo/agent/page_iterator.h"

#include <algorithm>

#include "demo/agent/element_mapping.h"
#include "demo/agent/failure.h"

namespace qv_demo {
namespace {

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

}  // namespace

void ElementPages::Set(managedElement::ManagedElement_T& entry, const std::string& ems,
                       const Element& element) {
    ToManagedElement(entry, ems, element);
}

void NamePages::Set(globaldefs::NamingAttributes_T& entry, const std::string& ems, const Element& element) {
    SetElementName(entry, ems, element.name);
}

template <class Pages>
PageIterator<Pages>::PageIterator(const Ems& ems, SessionId session, IteratorId id, std::size_t position)
    : ems_(ems), session_(session), id_(id), position_(position) {}

template <class Pages>
CORBA::Boolean PageIterator<Pages>::next_n(CORBA::ULong how_many, typename Pages::ListOut list) {
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

template <class Pages>
CORBA::ULong PageIterator<Pages>::getLength() {
    Touch();
    return static_cast<CORBA::ULong>(ems_.inventory.size());
}

template <class Pages>
void PageIterator<Pages>::destroy() {
    Touch();
    ems_.iterators.Close(id_);
}

template <class Pages>
void PageIterator<Pages>::Touch() {
    ems_.sessions.Touch(session_);
    ems_.iterators.Touch(id_);
}

template <class Pages>
void FirstPage(const Ems& ems, const Session& session, CORBA::ULong how_many, typename Pages::ListOut list,
               typename Pages::IteratorOut iterator) {
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

template void FirstPage<ElementPages>(const Ems&, const Session&, CORBA::ULong, ElementPages::ListOut,
                                      ElementPages::IteratorOut);
template void FirstPage<NamePages>(const Ems&, const Session&, CORBA::ULong, NamePages::ListOut,
                                   NamePages::IteratorOut);

}  // namespace qv_demo
