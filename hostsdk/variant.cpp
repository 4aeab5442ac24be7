#include "hostsdk/variant.h"

#include <cmath>

double VariantNumber(const VARIANT& v)
{
    switch (v.vt) {
    case VT_I4:
        return v.lVal;
    case VT_UI4:
        return v.ulVal;
    case VT_UI8:
        return static_cast<double>(v.ullVal);
    case VT_BOOL:
        return v.boolVal ? 1.0 : 0.0;
    case VT_R8:
        return v.dblVal;
    default:
        return 0.0;
    }
}

void VariantFromNumber(VARIANT* v, double number)
{
    switch (v->vt) {
    case VT_I4:
        v->lVal = static_cast<int32_t>(std::lround(number));
        break;
    case VT_UI4:
        v->ulVal = static_cast<uint32_t>(number);
        break;
    case VT_UI8:
        v->ullVal = static_cast<uint64_t>(number);
        break;
    case VT_BOOL:
        v->boolVal = number != 0.0 ? -1 : 0;
        break;
    default:
        v->vt = VT_R8;
        v->dblVal = number;
        break;
    }
}

double ReadTypedNumber(const void* at, VARTYPE type)
{
    switch (type) {
    case VT_I4:
    case VT_BOOL:
        return *static_cast<const int32_t*>(at);
    case VT_UI4:
        return *static_cast<const uint32_t*>(at);
    case VT_UI8:
        return static_cast<double>(*static_cast<const uint64_t*>(at));
    default:
        return *static_cast<const double*>(at);
    }
}

void WriteTypedNumber(void* at, VARTYPE type, double number)
{
    switch (type) {
    case VT_I4:
        *static_cast<int32_t*>(at) = static_cast<int32_t>(std::lround(number));
        break;
    case VT_BOOL:
        *static_cast<int32_t*>(at) = number != 0.0 ? 1 : 0;
        break;
    case VT_UI4:
        *static_cast<uint32_t*>(at) = static_cast<uint32_t>(number);
        break;
    case VT_UI8:
        *static_cast<uint64_t*>(at) = static_cast<uint64_t>(number);
        break;
    default:
        *static_cast<double*>(at) = number;
        break;
    }
}
