#pragma once

#include <gtest/gtest.h>
#include <orbsvcs/CosNotificationC.h>
#include <tao/ORB.h>
#include <tao/TimeBaseC.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "services/notify/properties/property_check.h"
#include "services/notify/properties/qos.h"

namespace qv_notify_test {

/// Anys with texts need an ORB.
class PropertyTest : public ::testing::Test {
  protected:
    PropertyTest() {
        int argc = 0;
        char* argv[] = {nullptr};
        m_orb = CORBA::ORB_init(argc, argv);
    }

  private:
    CORBA::ORB_var m_orb;
};

inline CORBA::Any Short(CORBA::Short value) {
    CORBA::Any any;
    any <<= value;
    return any;
}

inline CORBA::Any Long(CORBA::Long value) {
    CORBA::Any any;
    any <<= value;
    return any;
}

inline CORBA::Any TimeT(TimeBase::TimeT value) {
    CORBA::Any any;
    any <<= value;
    return any;
}

inline CORBA::Any Boolean(bool value) {
    CORBA::Any any;
    any <<= CORBA::Any::from_boolean(value);
    return any;
}

inline CORBA::Any Text(const char* value) {
    CORBA::Any any;
    any <<= value;
    return any;
}

inline CORBA::Any UtcT(TimeBase::TimeT time) {
    TimeBase::UtcT moment = {};
    moment.time = time;
    CORBA::Any any;
    any <<= moment;
    return any;
}

struct Wish {
    std::string name;
    CORBA::Any value;
};

inline CosNotification::PropertySeq Wishes(const std::vector<Wish>& wishes) {
    CosNotification::PropertySeq sequence;
    sequence.length(static_cast<CORBA::ULong>(wishes.size()));
    for (CORBA::ULong i = 0; i < sequence.length(); ++i) {
        sequence[i].name = wishes[i].name.c_str();
        sequence[i].value = wishes[i].value;
    }
    return sequence;
}

inline bool IsEmpty(const CORBA::Any& any) {
    const CORBA::TypeCode_var type = any.type();
    return type->kind() == CORBA::tk_null;
}

/// One error, or one range, as text: "name CODE low..high".
inline std::string RangeText(const CosNotification::PropertyRange& range) {
    if (IsEmpty(range.low_val) && IsEmpty(range.high_val)) {
        return "no range";
    }
    std::string text;
    for (const CORBA::Any* any : {&range.low_val, &range.high_val}) {
        CORBA::Boolean flag = false;
        CORBA::Short small = 0;
        CORBA::Long number = 0;
        CORBA::ULongLong time = 0;
        text += text.empty() ? "" : "..";
        if (*any >>= CORBA::Any::to_boolean(flag)) {
            text += flag ? "true" : "false";
        } else if (*any >>= small) {
            text += "short " + std::to_string(small);
        } else if (*any >>= number) {
            text += "long " + std::to_string(number);
        } else if (*any >>= time) {
            text += "time " + std::to_string(time);
        } else {
            text += "?";
        }
    }
    return text;
}

inline std::vector<std::string> ErrorTexts(const CosNotification::PropertyErrorSeq& errors) {
    const char* const codes[] = {"UNSUPPORTED_PROPERTY",
                                 "UNAVAILABLE_PROPERTY",
                                 "UNSUPPORTED_VALUE",
                                 "UNAVAILABLE_VALUE",
                                 "BAD_PROPERTY",
                                 "BAD_TYPE",
                                 "BAD_VALUE"};
    std::vector<std::string> texts;
    for (CORBA::ULong i = 0; i < errors.length(); ++i) {
        texts.push_back(std::string(errors[i].name.in()) + " " + codes[static_cast<int>(errors[i].code)] +
                        " " + RangeText(errors[i].available_range));
    }
    return texts;
}

}  // namespace qv_notify_test
