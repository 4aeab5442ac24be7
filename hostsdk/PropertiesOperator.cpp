#include "hostsdk/PropertiesOperator.h"

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

PropertiesOperator::PropertiesOperator(IUnknown* object)
{
    if (object)
        object->QueryInterface(IID_IDSProperties, reinterpret_cast<void**>(&properties));
}

PropertiesOperator::~PropertiesOperator()
{
    if (properties)
        properties->Release();
}

HRESULT PropertiesOperator::GetAnimatedProperty(const GUID& guid, VARIANT* value, void*, double time)
{
    if (!value)
        return E_POINTER;
    if (!properties)
        return E_NOINTERFACE;
    VARIANT held;
    VariantInit(&held);
    const HRESULT status = properties->GetProperty(guid, &held, time == -1.0 ? currentTime : time);
    if (FAILED(status))
        return status;
    // 64-bit handles travel whole; everything else by its number.
    if (value->vt == VT_EMPTY || (value->vt == VT_UI8 && held.vt == VT_UI8))
        *value = held;
    else
        VariantFromNumber(value, VariantNumber(held));
    return S_OK;
}

HRESULT PropertiesOperator::GetPlainProperty(const GUID& guid, VARIANT* value)
{
    if (!value)
        return E_POINTER;
    if (!properties)
        return E_NOINTERFACE;
    return properties->GetProperty(guid, value, -1.0);
}

HRESULT PropertiesOperator::SetAnimatedProperty(const GUID& guid, VARIANT* value, void*, int undoStyle, double time)
{
    if (!value)
        return E_POINTER;
    if (!properties)
        return E_NOINTERFACE;
    const double at = time == -1.0 ? currentTime : time;
    // A property that cannot be animated takes the value whatever the mode.
    HRESULT status = E_INVALIDARG;
    if (autoKey || properties->IsPropertyAnimated(guid) == S_OK)
        status = properties->SetPropertyKey(guid, at, VariantNumber(*value));
    if (status == E_INVALIDARG)
        status = properties->SetProperty(guid, value);
    if (SUCCEEDED(status))
        writes.push_back({guid, *value, undoStyle, time});
    return status;
}
