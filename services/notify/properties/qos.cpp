#include "services/notify/properties/qos.h"

#include "services/notify/properties/property_check.h"
#include "services/notify/properties/property_table.h"

namespace qv_notify {
namespace {

bool IsReliability(const std::string& name) {
    return name == CosNotification::EventReliability || name == CosNotification::ConnectionReliability;
}

/// What this service supports where it runs.
Range Supported(const KnownProperty& property, const Capabilities& capabilities) {
    Range range = property.supported;
    if (!capabilities.persistent && IsReliability(property.name)) {
        range.high = range.low;
    }
    return range;
}

/// What of that goes with the other properties: events that are kept need connections that are kept.
Range BesideOthers(const KnownProperty& property, const Capabilities& capabilities,
                   const PropertyValues& holding) {
    Range range = Supported(property, capabilities);
    const auto is_persistent = [&holding](const char* name) {
        return ValueOf(holding, name, std::int16_t{CosNotification::BestEffort}) ==
               CosNotification::Persistent;
    };
    if (property.name == std::string(CosNotification::EventReliability) &&
        !is_persistent(CosNotification::ConnectionReliability)) {
        range.high = range.low;
    } else if (property.name == std::string(CosNotification::ConnectionReliability) &&
               is_persistent(CosNotification::EventReliability)) {
        range.low = range.high;
    }
    return range;
}

/// One set of wishes at one level.
class Wishes {
  public:
    Wishes(QosLevel level, const CosNotification::QoSProperties& wanted, const Capabilities& capabilities,
           const PropertyValues& settings)
        : m_level(level), m_capabilities(capabilities), m_holding(settings) {
        for (CORBA::ULong i = 0; i < wanted.length(); ++i) {
            Add(wanted[i]);
        }
        for (const auto& [property, value] : m_sound) {
            CheckBesideOthers(*property, value);
        }
        if (m_errors.length() > 0) {
            throw CosNotification::UnsupportedQoS(m_errors);
        }
    }

    /// What holds when the wishes are fulfilled.
    const PropertyValues& Holding() const { return m_holding; }

  private:
    void Add(const CosNotification::Property& wish) {
        const KnownProperty* property = FindQos(wish.name.in());
        if (property == nullptr) {
            AppendError(m_errors, wish.name, CosNotification::BAD_PROPERTY);
        } else if ((property->levels & LevelBit(m_level)) == 0) {
            AppendError(m_errors, wish.name, CosNotification::UNAVAILABLE_PROPERTY);
        } else if (!property->usable) {
            AppendError(m_errors, wish.name, CosNotification::UNSUPPORTED_PROPERTY);
        } else if (property->is_moment) {
            AddMoment(*property, wish.value);
        } else {
            AddValue(*property, wish.value);
        }
    }

    void AddMoment(const KnownProperty& property, const CORBA::Any& any) {
        if (const auto moment = ReadMoment(any)) {
            m_holding[property.name] = *moment;
        } else {
            AppendError(m_errors, property.name, CosNotification::BAD_TYPE);
        }
    }

    void AddValue(const KnownProperty& property, const CORBA::Any& any) {
        const auto value = ReadValue(any, property.initial);
        const Range supported = Supported(property, m_capabilities);
        if (!value) {
            AppendError(m_errors, property.name, CosNotification::BAD_TYPE);
        } else if (!Contains(property.legal, *value)) {
            AppendError(m_errors, property.name, CosNotification::BAD_VALUE, supported);
        } else if (!Contains(supported, *value)) {
            AppendError(m_errors, property.name, CosNotification::UNSUPPORTED_VALUE, supported);
        } else {
            m_holding[property.name] = *value;
            m_sound[&property] = *value;
        }
    }

    void CheckBesideOthers(const KnownProperty& property, const PropertyValue& value) {
        const Range range = BesideOthers(property, m_capabilities, m_holding);
        if (!Contains(range, value)) {
            AppendError(m_errors, property.name, CosNotification::UNAVAILABLE_VALUE, range);
        }
    }

    const QosLevel m_level;
    const Capabilities m_capabilities;
    PropertyValues m_holding;
    std::map<const KnownProperty*, PropertyValue> m_sound;
    CosNotification::PropertyErrorSeq m_errors;
};

bool IsWanted(const CosNotification::QoSProperties& wanted, const std::string& name) {
    for (CORBA::ULong i = 0; i < wanted.length(); ++i) {
        if (name == wanted[i].name.in()) {
            return true;
        }
    }
    return false;
}

}  // namespace

PropertyValues DefaultQos() {
    PropertyValues values;
    for (const KnownProperty& property : QosTable()) {
        if ((property.levels & LevelBit(QosLevel::kChannel)) != 0) {
            values[property.name] = property.initial;
        }
    }
    return values;
}

void ApplyQos(QosLevel level, const CosNotification::QoSProperties& wanted, const Capabilities& capabilities,
              PropertyValues& settings) {
    settings = Wishes(level, wanted, capabilities, settings).Holding();
}

CosNotification::NamedPropertyRangeSeq* ValidateQos(QosLevel level,
                                                    const CosNotification::QoSProperties& wanted,
                                                    const Capabilities& capabilities,
                                                    const PropertyValues& settings) {
    const Wishes wishes(level, wanted, capabilities, settings);
    CosNotification::NamedPropertyRangeSeq_var ranges = new CosNotification::NamedPropertyRangeSeq;
    for (const KnownProperty& property : QosTable()) {
        if ((property.levels & LevelBit(level)) == 0 || !property.usable || IsWanted(wanted, property.name)) {
            continue;
        }
        const CORBA::ULong at = ranges->length();
        ranges->length(at + 1);
        ranges[at].name = property.name;
        if (!property.is_moment) {
            ranges[at].range = ToAnys(BesideOthers(property, capabilities, wishes.Holding()));
        }
    }
    return ranges._retn();
}

PropertyValues AvailableAt(QosLevel level, const PropertyValues& values) {
    PropertyValues available;
    for (const auto& [name, value] : values) {
        const KnownProperty* property = FindQos(name);
        if (property != nullptr && (property->levels & LevelBit(level)) != 0) {
            available[name] = value;
        }
    }
    return available;
}

CosNotification::QoSProperties* ToSequence(const PropertyValues& values) {
    CosNotification::QoSProperties_var sequence = new CosNotification::QoSProperties;
    sequence->length(static_cast<CORBA::ULong>(values.size()));
    CORBA::ULong at = 0;
    for (const auto& [name, value] : values) {
        sequence[at].name = name.c_str();
        WriteValue(value, sequence[at].value);
        ++at;
    }
    return sequence._retn();
}

}  // namespace qv_notify
