#pragma once

#include <string>

#include "demo/agent/core/inventory.h"
#include "managedElementC.h"

namespace qv_demo {

/// {"EMS", ems}
void SetEmsName(globaldefs::NamingAttributes_T& name, const std::string& ems);

/// {"EMS", ems}, {"ManagedElement", element}
void SetElementName(globaldefs::NamingAttributes_T& name, const std::string& ems, const std::string& element);

/// The element's own name out of its full one. Raises EXCPT_INVALID_INPUT when the text doesn't have the form
/// of a managed element's name, EXCPT_ENTITY_NOT_FOUND when it lies in another EMS.
std::string ElementNameOf(const globaldefs::NamingAttributes_T& name, const std::string& ems);

void ToPairs(globaldefs::NVSList_T& list, const Texts& pairs);
TextPairs FromPairs(const globaldefs::NVSList_T& list);

void ToManagedElement(managedElement::ManagedElement_T& to, const std::string& ems, const Element& from);

}  // namespace qv_demo
