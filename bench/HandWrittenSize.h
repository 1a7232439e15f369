// HandWrittenSize: the Size entry written out by hand, without the binding templates, as the
// baseline of the binding's cost. It makes the same host calls in the same order as the
// module's entry. It lives in a unit of its own that sees only the host's interfaces, as the
// module does, so the compiler cannot bind the host's virtual calls at build time.
#pragma once

#include "host/IContext.h"
#include "host/IModuleInfo.h"
#include "host/IVariant.h"

namespace bench {

// NOTE: visible outside the shared object it is built into, so that bench/SizeCalls.cpp can
// call it in the copy of the module that holds it too (bench/CMakeLists.txt).
// count < 1 => 65537 and the number 0; a null or non-DATAREF first argument => 65538 and
// the number 0; a DATAREF holding null => one report and the number 0; otherwise the size.
__attribute__((visibility("default"))) unsigned int HandWrittenSize(int count,
                                                                    Tavrel::IVariant** arguments,
                                                                    Tavrel::IVariant* result,
                                                                    Tavrel::IModuleInfo* info,
                                                                    Tavrel::IContext* context);

}  // namespace bench
