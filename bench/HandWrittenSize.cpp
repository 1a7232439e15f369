#include "bench/HandWrittenSize.h"

#include "host/ErrorNames.h"
#include "host/VariantType.h"
#include "object/AutoRefPtr.h"
#include "object/IDataRef.h"

namespace bench {

namespace {

void StoreNumber(Tavrel::IVariant* result, double value) {
    if (result != nullptr) {
        result->AssignNumber(value);
    }
}

}  // namespace

unsigned int HandWrittenSize(int count, Tavrel::IVariant** arguments, Tavrel::IVariant* result,
                             Tavrel::IModuleInfo* /*info*/, Tavrel::IContext* context) {
    if (count < 1) {
        StoreNumber(result, 0.0);
        return 0x10001;
    }
    Tavrel::IVariant* const argument = arguments[0];
    if (argument == nullptr || argument->GetType() != Tavrel::VariantType::kDataRef) {
        StoreNumber(result, 0.0);
        return 0x10002;
    }
    Tavrel::AutoRefPtr<Tavrel::IDataRef> const data = argument->GetData();
    std::size_t size = 0;
    if (!data) {
        context->TriggerErrorHandler(2, "Binary", Tavrel::TavrelError::InvalidUsage(),
                                     "No binary data given!");
    } else {
        size = data->GetSize();
    }
    StoreNumber(result, static_cast<double>(size));
    return 0;
}

}  // namespace bench
