#include "minihost/script/ScriptError.h"

namespace minihost {

std::string FormatAt(std::string_view file, SourcePosition position, std::string_view message) {
    std::string text(file);
    text += ':' + std::to_string(position.line) + ':' + std::to_string(position.column) + ": ";
    text += message;
    return text;
}

ScriptError::ScriptError(SourcePosition position, std::string const& message)
    : std::runtime_error(message), mPosition(position) {}

std::string ScriptError::Format(std::string_view file) const {
    return FormatAt(file, mPosition, what());
}

}  // namespace minihost
