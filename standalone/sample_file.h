#pragma once

#include <string>

namespace qv_standalone {

/// An annotated configuration file with every setting: meaning, unit, range, default and an example, each set
/// to its default in a comment. Used as it is, it changes nothing.
std::string SampleFile();

}  // namespace qv_standalone
