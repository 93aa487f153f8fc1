#pragma once

#include <json/value.h>

#include <string>

namespace qv_standalone {

/// A span as a collector of Zipkin v2 takes it; null when it lacks ids in hexadecimal digits. The component
/// that is called is what stands before the second ":" of the span's name, `component` where that names
/// nothing. Throws std::exception for a span of another shape. Reentrant.
Json::Value ZipkinSpan(const Json::Value& span, const std::string& component);

}  // namespace qv_standalone
