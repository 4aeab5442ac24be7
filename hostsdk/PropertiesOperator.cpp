#include "hostsdk/PropertiesOperator.h"

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
