// PPG_PageOne: the effect's property page. It binds its controls to the
// effect's properties, applies the live ranges of the number controls, shows
// and hides controls by Shape and Match Radii, and starts and stops the
// viewer overlay with its Overlay button.
#pragma once

#include <cstdint>

#include "hostsdk/CDSPropertyPage.h"
#include "hostsdk/com_object.h"

class Lumenveil;
class CDSInteractiveTool;

// Ids of the page's own controls.
inline constexpr uint32_t ID_OVERLAY_BUTTON = 5;
inline constexpr uint32_t IDD_PAGE_ONE = 11;
inline constexpr int32_t kOverlayContextKind = 3;

// The page's dialog.
const DSDialogTemplate& PageOneDialog();
// The page's control map, initialised: the rows of the shared aperture and
// emphasis controls, which a page built on this one takes over.
CDSPPGControlMap* PageOneControlMap();

class PPG_PageOne : public CDSPropertyPage, public CDSComObject<IUnknown> {
public:
    PPG_PageOne();
    ~PPG_PageOne() override;

    // Opens the page on an effect with the page's own dialog.
    HRESULT OpenOn(IUnknown* effect) override;

    HRESULT Show(bool visible) override;
    // Opens the effect's help page; always 0.
    HRESULT Help(const wchar_t* directory) override;
    CDSPPGControlMap* GetControlMap() override;
    HRESULT OnInitPage() override;
    HRESULT UpdateUI(const GUID* property, void* object, void* params, uint32_t flags) override;
    HRESULT TransportNotify(int32_t state, double rate, CDSTime time) override;

    // Handlers of the control map.
    void OnShapeListChanged();
    void OnMatchRadiiClicked();
    void OnOverlayButton();

    int32_t serverLockTaken;
    Lumenveil* lumenveil;
    uint32_t overlayContext;   // 0: the overlay is off
    IUnknown* tool;            // the interactive tool, made once
    uint64_t lumenveilHandle;
    uint64_t lumenveilHandle2;
    uint32_t changeCount;
    int32_t shape;
    int32_t matchRadii;
    double radiusX;
    double radiusY;
    int32_t sides;
    double rotation;
    double brightEmphasis;
    int32_t emphasiseAlpha;
    int32_t extremePrecision;
    double centreX;
    double centreY;
    double radiusPsf1;
    double radiusPsf2;

private:
    // Sets the page member of the twelve controls of `lumenveil`.
    void attachControls(CDSBasePropertyPage* page);
    // Whether `time` lies inside the inspected effect's time span.
    bool insideEffect(CDSTime time);
    // Writes the change counter's new value so that the host sees a change.
    void announceChange();
    // IID_IDSPropertyPage: the page part.
    void* FindInterface(const GUID& iid) override;

protected:
    // A page built on this one: its own dialog and title, and the class of
    // the interactive tool its Overlay button starts.
    PPG_PageOne(uint32_t dialogId, uint32_t titleId, const GUID& toolClass);
};
