// CDSPropertyPage: a property page built from a dialog description and driven
// by a control map. Opened on an object, it makes its widgets, binds them to
// the object's properties through a PropertiesOperator, and moves values both
// ways: UpdateUI shows the properties in the widgets and bound fields; a user
// change (UserChange, UserClick) writes the property at the current time with
// undo style 1 and then calls the row's handler.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "hostsdk/CDSBasePropertyPage.h"
#include "hostsdk/CDSPPGControlMap.h"
#include "hostsdk/PropertiesOperator.h"
#include "hostsdk/dialog.h"

// The host's time: seconds.
struct CDSTime {
    double seconds;
};

struct CDSDouble {
    // The tolerance of time comparisons.
    static constexpr double Epsilon = 1e-9;
};

// The undo style pages write with.
inline constexpr int UNDO_STYLE = 1;

// A page object that is also a COM object answers this interface identifier
// with its CDSPropertyPage part (one more reference on the object).
inline constexpr GUID IID_IDSPropertyPage = {0x4c560206, 0x6d66, 0x4966, {0x8a, 0x26, 0x50, 0x41, 0x47, 0x45, 0x01, 0x06}};

class CDSPropertyPage : public CDSBasePropertyPage {
public:
    CDSPropertyPage(uint32_t dialogId, uint32_t titleId);
    ~CDSPropertyPage() override;

    // Builds the widgets of `dialog`, inspects `object` (a counted reference is
    // held until Close), runs OnInitPage and fills the widgets (UpdateUI).
    HRESULT Open(IUnknown* object, const DSDialogTemplate* dialog);
    // Opens the page on `object` with the page's own dialog; E_NOTIMPL here.
    virtual HRESULT OpenOn(IUnknown* object);
    // Shows nothing any more and lets the object go.
    void Close();

    virtual HRESULT Show(bool visible);
    virtual HRESULT Help(const wchar_t* directory);
    virtual CDSPPGControlMap* GetControlMap() = 0;
    virtual HRESULT OnInitPage();
    // Shows the properties in the widgets and bound fields (`property` null or
    // any: all of them).
    virtual HRESULT UpdateUI(const GUID* property, void* object, void* params, uint32_t flags);
    // The host's transport moved to `time` (seconds) at `rate`.
    virtual HRESULT TransportNotify(int32_t state, double rate, CDSTime time);

    // A user's edit of control `id`: combo boxes take the list index, check boxes
    // 0 or 1, number controls the number. E_INVALIDARG for a control without a
    // bound property.
    HRESULT UserChange(uint32_t id, double value);
    // A user's click on button `id`.
    HRESULT UserClick(uint32_t id);

    // Reads the property's stored value into its bound field.
    HRESULT SetBoundVariableFromProperty(const GUID& guid, void* params);
    HRESULT GetPlainProperty(const GUID& guid, VARIANT* value, void* object);
    // The object's local time of a host time (objects start at 0 here).
    CDSTime ConvertToLocalTime(CDSTime time, void* object) const;

    bool Visible() const { return visible; }
    IUnknown* InspectedObject() const { return object; }
    PropertiesOperator* Properties() const { return properties.get(); }
    // The page as text, a line a control in dialog order: its label (a value
    // control's is the static text after it, which gets no line of its own),
    // class, shown, enabled, value and range, check state, or chosen entry
    // and entries, and last its control id.
    std::string DescribeState() const;

    uint32_t dialogId;
    uint32_t titleId;

private:
    IUnknown* object = nullptr;
    std::unique_ptr<PropertiesOperator> properties;
    const DSDialogTemplate* dialog = nullptr;
    bool visible = false;
};
