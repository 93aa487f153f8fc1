#include "logging/printed_parameters.h"

#include <utility>

#include "orb/request_values.h"

namespace NS_CORBA {

const PrintedParameters* PrintedParameters::Of(qv_orb::RequestValues& values) {
    const auto* const printed = static_cast<const PrintedParameters*>(values.attachment().get());
    return printed && !printed->text.empty() ? printed : nullptr;
}

void PrintedParameters::Leave(qv_orb::RequestValues& values, std::shared_ptr<PrintedParameters> printed) {
    values.attachment() = std::move(printed);
}

}  // namespace NS_CORBA
