#pragma once
#include "platform/messages.h"
#include "platform/runtime_error.h"

#include <string>
#include <utility>

namespace wxl::platform {

/// Runs `procedure` under its error handler: a fault ends it, shows "LABEL" + error number in a box without a title,
/// and returns normally with a default-constructed result. Nothing is rolled back.
template <class Procedure>
auto Guarded(IMessages& messages, const std::string& label, Procedure&& procedure) -> decltype(procedure()) {
    try {
        return std::forward<Procedure>(procedure)();
    } catch (...) {
        messages.Show({.Text = label + std::to_string(CurrentError().Number), .Kind = BoxKind::kFault});
    }
    return decltype(procedure())();
}

/// As Guarded, with `suffix` appended to the same box after the number.
template <class Procedure>
auto GuardedWithAdvice(IMessages& messages, const std::string& label, const std::string& suffix, Procedure&& procedure)
    -> decltype(procedure()) {
    try {
        return std::forward<Procedure>(procedure)();
    } catch (...) {
        messages.Show({.Text = label + std::to_string(CurrentError().Number) + suffix, .Kind = BoxKind::kFault});
    }
    return decltype(procedure())();
}

/// The second form of the report: label, the detail text that `detail` holds at the time of the error, ",", number.
template <class Procedure>
auto GuardedWithDetail(IMessages& messages, const std::string& label, const std::string& detail, Procedure&& procedure)
    -> decltype(procedure()) {
    try {
        return std::forward<Procedure>(procedure)();
    } catch (...) {
        messages.Show({.Text = label + detail + "," + std::to_string(CurrentError().Number), .Kind = BoxKind::kFault});
    }
    return decltype(procedure())();
}

}  // namespace wxl::platform
