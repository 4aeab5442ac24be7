// CDSInteractiveTool: the base of a viewer tool that draws over the image and
// answers pen events.
//
// The host links a tool to an operator (the object it edits, IVWOperator) and
// to a viewer, then calls the On* operations; a derived tool overrides those it
// needs and calls the base first. Every default does nothing and returns S_OK,
// except for a null pointer argument (E_POINTER) and the interaction rules:
//
// - OnBeginInteraction starts an interaction.
// - OnPenMove during an interaction calls OnDoInteraction and returns its result.
// - TerminateInteraction ends it: it calls OnEndInteraction once.
// - The base's OnPenDown and OnPenUp start and end nothing: a tool decides
//   which button begins an interaction (OnPenDown -> OnBeginInteraction,
//   OnPenUp -> TerminateInteraction).
//
// The tool owns neither its operator nor its viewer. It is a plain C++ object:
// reference counting and interfaces are for a COM class deriving from it.
#pragma once

#include <cstdint>
#include <vector>

#include "hostsdk/IVWOperator.h"
#include "hostsdk/guid.h"
#include "hostsdk/hresult.h"
#include "hostsdk/variant.h"
#include "hostsdk/viewer.h"

// A rectangle of a tool's layer, in image pixels.
struct VWRECT {
    double left;
    double bottom;
    double width;
    double height;
};

// A tool object that is also a COM object answers this interface identifier
// with its CDSInteractiveTool part (one more reference on the object).
inline constexpr GUID IID_IDSInteractiveTool = {0x4c560204, 0x6d66, 0x4966, {0x8a, 0x24, 0x54, 0x4f, 0x4f, 0x4c, 0x01, 0x04}};

class CDSInteractiveTool {
public:
    // One InvalidateLayer call.
    struct LayerInvalidation {
        int32_t layer;
        bool whole;   // no rectangle was given
        VWRECT area;  // the rectangle given, when not whole
    };

    CDSInteractiveTool() = default;
    virtual ~CDSInteractiveTool() = default;
    CDSInteractiveTool(const CDSInteractiveTool&) = delete;
    CDSInteractiveTool& operator=(const CDSInteractiveTool&) = delete;

    // Draws the tool's layer on `surface` (see vwSurfaceBeginRenderOpenGL).
    virtual HRESULT OnRender(VWSurface* surface);
    // A property of `object` changed to `value`.
    virtual HRESULT OnPropertyChanged(const GUID& property, const VARIANT* value, void* object, void* params,
                                      uint32_t flags);
    // The host's current time moved to `time` (seconds).
    virtual HRESULT OnOnTimeChange(double time);
    virtual HRESULT OnPenDown(const tagVWPENEVENT* event);
    virtual HRESULT OnPenUp(const tagVWPENEVENT* event);
    // During an interaction: OnDoInteraction(event); otherwise nothing.
    virtual HRESULT OnPenMove(const tagVWPENEVENT* event);
    // Starts an interaction.
    virtual HRESULT OnBeginInteraction(const tagVWPENEVENT* event);
    virtual HRESULT OnDoInteraction(const tagVWPENEVENT* event);
    // Called by TerminateInteraction, after the interaction has ended.
    virtual HRESULT OnEndInteraction();
    // Links the tool to `op`; null unlinks.
    virtual HRESULT OnLinkToOperator(IVWOperator* op);
    // Links the tool to `viewer`; null unlinks.
    virtual HRESULT OnLinkToViewer(VWViewer* viewer);

    // Asks the viewer to redraw `layer`, the whole of it when `area` is null.
    // The request is recorded (Invalidations); the result is S_OK.
    HRESULT InvalidateLayer(int32_t layer, const VWRECT* area);
    // Ends the running interaction with OnEndInteraction and returns its result;
    // S_FALSE, calling nothing, if none runs.
    HRESULT TerminateInteraction();
    // The operator's property calls; E_UNEXPECTED while no operator is linked.
    HRESULT GetAnimatedProperty(const GUID& guid, VARIANT* value, void* params, double time);
    HRESULT SetAnimatedProperty(const GUID& guid, VARIANT* value, void* params, int undoStyle, double time);

    bool IsLinkedToViewer() const { return linkedToViewer; }
    bool IsLinkedToOperator() const { return linkedToOperator; }
    bool IsInteracting() const { return interacting; }
    IVWOperator* Operator() const { return linkedOperator; }
    VWViewer* Viewer() const { return linkedViewer; }
    // Every InvalidateLayer call since construction or the last clear, in order.
    const std::vector<LayerInvalidation>& Invalidations() const { return invalidations; }
    void ClearInvalidations() { invalidations.clear(); }

private:
    bool linkedToViewer = false;
    bool linkedToOperator = false;
    bool interacting = false;
    IVWOperator* linkedOperator = nullptr;
    VWViewer* linkedViewer = nullptr;
    std::vector<LayerInvalidation> invalidations;
};
