// IJSON: the host's JSON value. The module only names it in signatures.
#pragma once

namespace Tavrel {

class IJSON;

}  // namespace Tavrel
