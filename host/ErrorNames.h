// The names of the errors that the module reports through IContext::TriggerErrorHandler.
#pragma once

namespace Tavrel {

namespace TavrelError {
// "Error.Tavrel.InvalidUsage": a value the operation cannot work with, such as no buffer.
inline char const* InvalidUsage() { return "Error.Tavrel.InvalidUsage"; }
// "Error.Tavrel.InvalidArgument": a number out of range, such as a negative offset.
inline char const* InvalidArgument() { return "Error.Tavrel.InvalidArgument"; }
}  // namespace TavrelError

namespace SystemError {
// "Error.System.Access": the host gave no data for a path.
inline char const* CantAccess() { return "Error.System.Access"; }
}  // namespace SystemError

}  // namespace Tavrel
