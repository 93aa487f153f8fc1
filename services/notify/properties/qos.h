#pragma once

#include <orbsvcs/CosNotificationC.h>

#include "services/notify/properties/property_values.h"

namespace qv_notify {

/// What a QoS property is set on.
enum class QosLevel { kChannel, kAdmin, kProxy, kEvent };

/// What the service is able to do where it runs. For what lies in a channel that isn't kept itself,
/// `persistent` is false as well.
struct Capabilities {
    bool persistent = false;  ///< there is a store
};

/// The values of a channel that was created without any.
PropertyValues DefaultQos();

/// Puts what is wanted into `settings`, all of it or nothing. When a property is given twice, the later one
/// counts.
/// Raises CosNotification::UnsupportedQoS, which names every property that is wrong, and why:
/// BAD_PROPERTY (no such property), UNAVAILABLE_PROPERTY (none of this level), UNSUPPORTED_PROPERTY (this
/// service doesn't do that), BAD_TYPE, BAD_VALUE (no value of this property), UNSUPPORTED_VALUE (not one of
/// this service), UNAVAILABLE_VALUE (not beside the other settings); with the range of the values that would
/// do, or two empty Anys where there is none.
void ApplyQos(QosLevel level, const CosNotification::QoSProperties& wanted, const Capabilities& capabilities,
              PropertyValues& settings);

/// As ApplyQos, but changes nothing. Returns the ranges of those properties that could be set as well, which
/// is what isn't in `wanted`; the caller owns the sequence.
CosNotification::NamedPropertyRangeSeq* ValidateQos(QosLevel level,
                                                    const CosNotification::QoSProperties& wanted,
                                                    const Capabilities& capabilities,
                                                    const PropertyValues& settings);

/// Those of the values that can be set at this level.
PropertyValues AvailableAt(QosLevel level, const PropertyValues& values);

/// The values as QoS or admin properties, for a reply; the caller owns the sequence.
CosNotification::QoSProperties* ToSequence(const PropertyValues& values);

}  // namespace qv_notify
