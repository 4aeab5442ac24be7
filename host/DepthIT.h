// DepthIT: Lumenveil Depth's interactive tool, the focus picker. It draws and
// drags the image aperture's overlay as the plain tool (IT) does; a left
// press anywhere else on the frame reads the Depth input at that pixel, from
// the viewer (vwFetchInput), and sets Focus to the focus that puts the pixel
// in focus (FocusPickVZ), through the operator at the current time, so that
// the host sees the change and keys are set as the plain overlay sets them.
#pragma once

#include "host/IT.h"

class DepthIT : public IT {
public:
    DepthIT() = default;

    // Keeps the time the depth is fetched at.
    HRESULT OnOnTimeChange(double time) override;
    // Starts an interaction. While the Image shape shows the overlay, the
    // press goes to it first, as in the plain tool; unless it took a handle,
    // it picks the focus (PickFocus's status).
    HRESULT OnBeginInteraction(const tagVWPENEVENT* event) override;

    // Sets Focus from the depth under the pen. S_FALSE, changing nothing,
    // for a pen outside the frame; the viewer's status when it gives no
    // Depth image, E_INVALIDARG when that image is not float R G B A.
    HRESULT PickFocus(const tagVWPENEVENT* event);

    double currentTime = 0.0;  // seconds

private:
    // Whether the image aperture's overlay is drawn (the Image shape).
    bool overlayShown() const;
    // Whether the last press took a handle of the image aperture's overlay.
    bool overlayTookPress() const;
};
