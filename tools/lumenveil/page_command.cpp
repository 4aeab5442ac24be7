#include "tools/lumenveil/page_command.h"

#include <cstdio>

#include "hostsdk/CDSPropertyPage.h"
#include "tools/lumenveil/cli_error.h"
#include "embed/effect_instance.h"
#include "tools/lumenveil/depth_render.h"

void printPage(const EffectModule& module, const ParameterOptions& parameters, bool depth)
{
    EffectInstance effect = makeRenderEffect(module, depth, parameters);
    parameters.Apply(effect);
    if (depth)
        useLensWhenGiven(effect, parameters);
    HRESULT status = S_OK;
    ComRef<IUnknown> object = module.CreateObject(depth ? kDepthPageClassId : kPageClassId, &status);
    CDSPropertyPage* page = nullptr;
    if (object)
        object->QueryInterface(IID_IDSPropertyPage, reinterpret_cast<void**>(&page));
    // The page part is no IUnknown: the reference the query added is the object's.
    const ComRef<IUnknown> pageReference(page ? object.get() : nullptr);
    if (!page)
        throw Failure("the effect module has no property page to show");
    status = page->OpenOn(effect.Object());
    const std::string text = SUCCEEDED(status) ? page->DescribeState() : std::string();
    page->Close();
    if (FAILED(status))
        throw Failure("the property page would not open on the effect");
    std::fputs(text.c_str(), stdout);
}
