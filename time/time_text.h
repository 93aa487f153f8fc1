#pragma once

#include <ctime>
#include <string>

namespace NS_CORBA {

/// The layouts of a broken-down time; empty when one can't be made. Reentrant.
std::string UtcText(const tm& value);
std::string CompactText(const tm& value);
std::string DayFirstText(const tm& value);
std::string PlainText(const tm& value);

/// Reads a time string of the interface into `t`, seconds since 1970. False, with `t` as it was, when the
/// text is refused. Reentrant.
bool ReadTimeText(std::string text, time_t& t);

}  // namespace NS_CORBA
