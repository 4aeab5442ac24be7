#include "hostsdk/CDSInteractiveTool.h"

HRESULT CDSInteractiveTool::OnRender(VWSurface* surface) { return surface ? S_OK : E_POINTER; }

HRESULT CDSInteractiveTool::OnPropertyChanged(const GUID&, const VARIANT*, void*, void*, uint32_t) { return S_OK; }

HRESULT CDSInteractiveTool::OnOnTimeChange(double) { return S_OK; }

HRESULT CDSInteractiveTool::OnPenDown(const tagVWPENEVENT* event) { return event ? S_OK : E_POINTER; }

HRESULT CDSInteractiveTool::OnPenUp(const tagVWPENEVENT* event) { return event ? S_OK : E_POINTER; }

HRESULT CDSInteractiveTool::OnPenMove(const tagVWPENEVENT* event)
{
    if (!event)
        return E_POINTER;
    return interacting ? OnDoInteraction(event) : S_OK;
}

HRESULT CDSInteractiveTool::OnBeginInteraction(const tagVWPENEVENT* event)
{
    if (!event)
        return E_POINTER;
    interacting = true;
    return S_OK;
}

HRESULT CDSInteractiveTool::OnDoInteraction(const tagVWPENEVENT* event) { return event ? S_OK : E_POINTER; }

HRESULT CDSInteractiveTool::OnEndInteraction() { return S_OK; }

HRESULT CDSInteractiveTool::OnLinkToOperator(IVWOperator* op)
{
    linkedOperator = op;
    linkedToOperator = op != nullptr;
    return S_OK;
}

HRESULT CDSInteractiveTool::OnLinkToViewer(VWViewer* viewer)
{
    linkedViewer = viewer;
    linkedToViewer = viewer != nullptr;
    return S_OK;
}

HRESULT CDSInteractiveTool::InvalidateLayer(int32_t layer, const VWRECT* area)
{
    invalidations.push_back({layer, area == nullptr, area ? *area : VWRECT{0, 0, 0, 0}});
    return S_OK;
}

HRESULT CDSInteractiveTool::TerminateInteraction()
{
    if (!interacting)
        return S_FALSE;
    interacting = false;
    return OnEndInteraction();
}

HRESULT CDSInteractiveTool::GetAnimatedProperty(const GUID& guid, VARIANT* value, void* params, double time)
{
    return linkedOperator ? linkedOperator->GetAnimatedProperty(guid, value, params, time) : E_UNEXPECTED;
}

HRESULT CDSInteractiveTool::SetAnimatedProperty(const GUID& guid, VARIANT* value, void* params, int undoStyle,
                                                double time)
{
    return linkedOperator ? linkedOperator->SetAnimatedProperty(guid, value, params, undoStyle, time)
                          : E_UNEXPECTED;
}
