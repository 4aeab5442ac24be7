#include "tools/lumenveil/info_command.h"

#include <OpenImageIO/imageio.h>

#include <cstdio>

#include "hostsdk/image_format_geometry.h"
#include "embed/effect_instance.h"
#include "tools/lumenveil/host_format_choice.h"

namespace {

const char* typeName(const Parameter& p)
{
    if (p.isList())
        return "list";
    switch (p.type) {
    case VT_BOOL:
        return "switch";
    case VT_I4:
    case VT_UI4:
    case VT_UI8:
        return "integer";
    default:
        return "number";
    }
}

}  // namespace

void printEffectInfo(const EffectModule& module)
{
    EffectInstance effect(module.CreateEffect());
    const std::string name = module.ClassName(kEffectClassId);
    std::printf("effect:  %s\n", name.empty() ? "(unnamed)" : name.c_str());
    std::printf("class:   %s\n", FormatGuid(kEffectClassId).c_str());
    std::printf("module:  %s\n", module.Path().c_str());
    std::printf("inputs:  Input (index 0), the frame to defocus\n"
                "         Spread (index 1, optional), the picture the Image shape cuts its aperture from;\n"
                "         without it the aperture is cut from Input (render --spread FILE)\n");
    std::printf("parameters:\n");
    std::printf("  %-20s %-26s %-8s %-8s %-30s %s\n", "name", "option", "type", "default", "page range", "animatable");
    for (const Parameter& p : effect.Parameters()) {
        const std::string option = p.isFlag() ? "--[no-]" + p.option : "--" + p.option;
        std::printf("  %-20s %-26s %-8s %-8s %-30s %s\n", p.name.c_str(), option.c_str(), typeName(p),
                    formatParameterValue(p, p.defaultValue).c_str(), describeRange(p).c_str(),
                    p.animated ? "yes" : "no");
    }
}

void printFormats()
{
    std::printf("host pixel formats (render --host-format NAME):\n");
    std::printf("  %-4s %-24s %-8s %-6s %-10s %s\n", "code", "name", "samples", "bytes", "rows", "this tool");
    for (int32_t code = 1; code <= kHostFormatCount; ++code) {
        const HostFormatGeometry* f = hostFormatGeometry(code);
        const std::string why = hostFormatSupport(*f);
        std::printf("  %-4d %-24s %-8s %-6d %-10s %s\n", code, f->name, f->pairs ? "CbYCrY" : "RGBA", f->sampleBytes,
                    f->bottomUp ? "bottom-up" : "top-down", why.empty() ? "yes" : ("no: " + why).c_str());
    }
    std::string list;
    OIIO::getattribute("extension_list", list);
    std::printf("\nimage files (format: extensions):\n");
    size_t start = 0;
    while (start < list.size()) {
        size_t end = list.find(';', start);
        if (end == std::string::npos)
            end = list.size();
        std::printf("  %s\n", list.substr(start, end - start).c_str());
        start = end + 1;
    }
}
