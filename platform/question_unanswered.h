#pragma once
#include "platform/runtime_error.h"

namespace wxl::platform {

/// A question that nobody was there to answer. The work that asked it is as if it had never begun: what it changed
/// until then is taken back.
class QuestionUnanswered : public RuntimeError {
public:
    using RuntimeError::RuntimeError;
};

}  // namespace wxl::platform
