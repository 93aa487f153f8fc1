// Calls over connections of which nobody knows that the service has ended meanwhile.
#pragma once

#include <tao/ORB.h>

#include <chrono>
#include <thread>

namespace qv_accounting {

/// Calls again while there is no connection, which is found out by calling; for so long as a start may take.
template <class Call>
auto Insist(Call call) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    for (;;) {
        try {
            return call();
        } catch (const CORBA::SystemException& exception) {
            const bool away = CORBA::COMM_FAILURE::_downcast(&exception) != nullptr ||
                              CORBA::TRANSIENT::_downcast(&exception) != nullptr;
            if (!away || std::chrono::steady_clock::now() > end) {
                throw;
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

}  // namespace qv_accounting
