#include "host/IT.h"

#include "effect/Lumenveil.h"
#include "host/LumenveilProperties.h"
#include "host/Plug.h"
#include "hostsdk/gl.h"

namespace {

constexpr int32_t kToolLayer = 2;
// The host's identifier for "every property changed".
constexpr GUID kAllProperties = {0x5B192010, 0x2C0D, 0x11D0, {0x82, 0xAB, 0x00, 0xA0, 0x24, 0x3F, 0x10, 0x13}};

// A failure of a base operation, carried out of the code that met it.
struct BaseFailure {
    HRESULT status;
};

void check(HRESULT status)
{
    if (FAILED(status))
        throw BaseFailure{status};
}

}  // namespace

IT::IT() : serverLockTaken(0), lumenveil(nullptr), lastPenX(0), lastPenY(0), viewportA(0), viewportB(0)
{
    if (g_serverLockCount) {
        InterlockedIncrement(g_serverLockCount);
        serverLockTaken = 1;
    }
}

IT::~IT()
{
    if (serverLockTaken)
        InterlockedDecrement(g_serverLockCount);
}

void* IT::FindInterface(const GUID& iid)
{
    return IsEqualGUID(iid, IID_IDSInteractiveTool) ? static_cast<CDSInteractiveTool*>(this) : nullptr;
}

double IT::AspectFactor(double aspect) { return aspect >= 1.0 && aspect < 2.0 ? 1.0 : 1.0 / aspect; }

HRESULT IT::sendPen(int event, const tagVWPENEVENT* pen)
{
    const double f = AspectFactor(pen->pixelAspect);
    if (lumenveil)
        static_cast<OverlayVZ*>(lumenveil)->Mouse(event, static_cast<float>(pen->x),
                                                  static_cast<float>(pen->y * pen->pixelAspect * f));
    InvalidateLayer(kToolLayer, nullptr);
    return S_OK;
}

HRESULT IT::OnBeginInteraction(const tagVWPENEVENT* event)
{
    const HRESULT status = CDSInteractiveTool::OnBeginInteraction(event);
    if (FAILED(status))
        return status;
    return sendPen(OVERLAY_PRESS, event);
}

HRESULT IT::OnDoInteraction(const tagVWPENEVENT* event)
{
    const HRESULT status = CDSInteractiveTool::OnDoInteraction(event);
    if (FAILED(status))
        return status;
    lastPenX = event->x;
    lastPenY = event->y;
    return sendPen(OVERLAY_DRAG, event);
}

HRESULT IT::OnEndInteraction()
{
    try {
        // The release's coordinates are not used: the last pen position, raw.
        if (lumenveil)
            static_cast<OverlayVZ*>(lumenveil)->Mouse(OVERLAY_RELEASE, static_cast<float>(lastPenX),
                                                      static_cast<float>(lastPenY));
        check(CDSInteractiveTool::OnEndInteraction());
        InvalidateLayer(kToolLayer, nullptr);
        return S_OK;
    } catch (const BaseFailure& failure) {
        return failure.status;
    }
}

HRESULT IT::OnPenDown(const tagVWPENEVENT* event)
{
    if (event && event->button == VW_PEN_BUTTON_LEFT)
        return OnBeginInteraction(event);
    return CDSInteractiveTool::OnPenDown(event);
}

HRESULT IT::OnPenUp(const tagVWPENEVENT* event)
{
    if (event && event->button == VW_PEN_BUTTON_LEFT)
        return TerminateInteraction();
    return CDSInteractiveTool::OnPenUp(event);
}

HRESULT IT::OnOnTimeChange(double time)
{
    if (!IsLinkedToOperator())
        return S_OK;
    try {
        check(CDSInteractiveTool::OnOnTimeChange(time));
        InvalidateLayer(kToolLayer, nullptr);
        return S_OK;
    } catch (const BaseFailure& failure) {
        return failure.status;
    }
}

HRESULT IT::OnLinkToOperator(IVWOperator* op)
{
    try {
        check(CDSInteractiveTool::OnLinkToOperator(op));
        return IsLinkedToOperator() && IsLinkedToViewer() ? S_OK : S_FALSE;
    } catch (const BaseFailure& failure) {
        return failure.status;
    }
}

HRESULT IT::OnLinkToViewer(VWViewer* viewer)
{
    try {
        check(CDSInteractiveTool::OnLinkToViewer(viewer));
        tagVWVIEWPORTINFO info;
        if (viewer && SUCCEEDED(vwGetViewportInfo(viewer, &info))) {
            viewportA = info.a;
            viewportB = info.b;
        }
        // The handles carry a full 64-bit address.
        VARIANT handle, second;
        VariantInit(&handle);
        VariantInit(&second);
        handle.vt = second.vt = VT_UI8;
        if (SUCCEEDED(GetAnimatedProperty(PROPID_LumenveilHandle, &handle, nullptr, -1.0)))
            lumenveil = reinterpret_cast<Lumenveil*>(static_cast<uintptr_t>(handle.ullVal));
        GetAnimatedProperty(PROPID_LumenveilHandle2, &second, nullptr, -1.0);
        InvalidateLayer(kToolLayer, nullptr);
        return IsLinkedToOperator() && IsLinkedToViewer() ? S_OK : S_FALSE;
    } catch (const BaseFailure& failure) {
        return failure.status;
    }
}

HRESULT IT::OnPropertyChanged(const GUID& property, const VARIANT* value, void* object, void* params, uint32_t flags)
{
    const HRESULT status = CDSInteractiveTool::OnPropertyChanged(property, value, object, params, flags);
    if (FAILED(status) || !lumenveil)
        return status;
    Lumenveil& fx = *lumenveil;
    const bool all = property == kAllProperties;
    bool read = false;
    auto concerns = [&](const ControlVZ& c) { return all || (c.propertyGuid && *c.propertyGuid == property); };
    if (concerns(fx.shape))
        fx.shape.GetValue(-1.0, &fx.shape.value), read = true;
    if (concerns(fx.matchRadii))
        fx.matchRadii.GetValue(-1.0, &fx.matchRadii.value), read = true;
    for (FloatControlVZ* c : {static_cast<FloatControlVZ*>(&fx.radiusX), static_cast<FloatControlVZ*>(&fx.radiusY)})
        if (concerns(*c))
            c->GetValue(-1.0, &c->value), read = true;
    if (concerns(fx.sides))
        fx.sides.GetValue(-1.0, &fx.sides.value), read = true;
    for (FloatControlVZ* c : {&fx.rotation, &fx.brightEmphasis})
        if (concerns(*c))
            c->GetValue(-1.0, &c->value), read = true;
    for (CheckboxControlVZ* c : {&fx.emphasiseAlpha, &fx.extremePrecision})
        if (concerns(*c))
            c->GetValue(-1.0, &c->value), read = true;
    double discard = 0.0;
    if (all || (fx.centre.propertyGuid && *fx.centre.propertyGuid == property))
        fx.centre.GetValue(-1.0, &fx.centre.x, &discard), read = true;
    if (all || (fx.centre.propertyGuidY && *fx.centre.propertyGuidY == property))
        fx.centre.GetValue(-1.0, &discard, &fx.centre.y), read = true;
    for (FloatControlVZ* c : {static_cast<FloatControlVZ*>(&fx.radiusPsf1), static_cast<FloatControlVZ*>(&fx.radiusPsf2)})
        if (concerns(*c))
            c->GetValue(-1.0, &c->value), read = true;
    if (read)
        InvalidateLayer(kToolLayer, nullptr);
    return status;
}

HRESULT IT::OnRender(VWSurface* surface)
{
    tagVWOPENGLSURFACE gl;
    const HRESULT status = vwSurfaceBeginRenderOpenGL(surface, &gl);
    if (FAILED(status))
        return status;
    glViewport(0, 0, gl.width, gl.height);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glOrtho(gl.viewLeft, gl.viewLeft + gl.viewWidth, gl.viewBottom, gl.viewBottom + gl.viewHeight, 0.0, 1.0);
    const double h = gl.imageHeight, w = gl.imageWidth, a = gl.pixelAspect;
    const double f = AspectFactor(a);
    glScalef(1.0f, static_cast<float>(h / (f * a * h)), 1.0f);
    glPushMatrix();
    if (lumenveil) {
        OverlayVZ& overlay = *lumenveil;
        overlay.aspectNumerator = static_cast<float>((a * h * f) / h);
        overlay.aspectDenominator = 1.0f;
        overlay.imageHeight = static_cast<int32_t>(a * h * f);
        overlay.imageWidth = static_cast<int32_t>(w);
        overlay.zoom = static_cast<float>(1.0 / f);
        overlay.Draw();
    }
    glPopMatrix();
    vwSurfaceEndRenderOpenGL(surface);
    return status;
}
