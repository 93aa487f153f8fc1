#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace qv_orb {
class RequestValues;
}

namespace NS_CORBA {

/// The texts of a request's parameters, kept from its record for the one of its reply: what a servant gets
/// stays as it is, and printing it is the larger part of a record. Used by the thread of the request.
struct PrintedParameters {
    struct Piece {
        std::size_t begin = 0;
        std::size_t end = 0;
    };

    std::string text;           ///< empty: not complete yet
    std::vector<Piece> pieces;  ///< places in `text`, by parameter; out parameters have none

    /// What the request's record left with the values; null when that left nothing.
    static const PrintedParameters* Of(qv_orb::RequestValues& values);
    /// Leaves them with the values, for as long as the request lasts.
    static void Leave(qv_orb::RequestValues& values, std::shared_ptr<PrintedParameters> printed);
};

}  // namespace NS_CORBA
