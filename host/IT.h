// IT: the interactive tool that puts the image aperture's crosshair and circles
// over the frame in the viewer, and turns pen events into overlay events.
#pragma once

#include <cstdint>

#include "hostsdk/CDSInteractiveTool.h"
#include "hostsdk/com_object.h"

class Lumenveil;

class IT : public CDSInteractiveTool, public CDSComObject<IUnknown> {
public:
    IT();
    ~IT() override;

    HRESULT OnRender(VWSurface* surface) override;
    HRESULT OnPropertyChanged(const GUID& property, const VARIANT* value, void* object, void* params,
                              uint32_t flags) override;
    HRESULT OnOnTimeChange(double time) override;
    HRESULT OnPenDown(const tagVWPENEVENT* event) override;
    HRESULT OnPenUp(const tagVWPENEVENT* event) override;
    HRESULT OnBeginInteraction(const tagVWPENEVENT* event) override;
    HRESULT OnDoInteraction(const tagVWPENEVENT* event) override;
    HRESULT OnEndInteraction() override;
    HRESULT OnLinkToOperator(IVWOperator* op) override;
    HRESULT OnLinkToViewer(VWViewer* viewer) override;

    // The vertical stretch factor f of a pixel aspect a: 1 for a in [1, 2),
    // else 1 / a, so that a x f is the stretch and other aspects count as square.
    static double AspectFactor(double aspect);

    int32_t serverLockTaken;
    Lumenveil* lumenveil;
    double lastPenX;
    double lastPenY;  // raw, as the pen gave it
    double viewportA;
    double viewportB;

private:
    // Sends an overlay event with the pen's y stretched by the aspect.
    HRESULT sendPen(int event, const tagVWPENEVENT* pen);
    // IID_IDSInteractiveTool: the tool part.
    void* FindInterface(const GUID& iid) override;
};
