// The frei0r entry points of lumenveil.so: a filter of packed 8-bit R G B A
// frames, each instance one Lumenveil effect (FilterInstance). No exception
// leaves these functions, and a null or unknown argument is ignored.
extern "C" {
#include <frei0r.h>
}

#include <cstdint>
#include <new>

#include "frei0r/filter_instance.h"
#include "frei0r/filter_module.h"

namespace {

constexpr int kFilterMajorVersion = 0;
constexpr int kFilterMinorVersion = 1;

FilterInstance* instanceOf(f0r_instance_t instance) { return static_cast<FilterInstance*>(instance); }

}  // namespace

extern "C" {

__attribute__((visibility("default"))) int f0r_init()
{
    // The module is loaded on first need; a failure shows in every instance.
    return 1;
}

__attribute__((visibility("default"))) void f0r_deinit() {}

__attribute__((visibility("default"))) void f0r_get_plugin_info(f0r_plugin_info_t* info)
{
    if (!info)
        return;
    info->name = "Lumenveil";
    info->author = "Lumenveil";
    info->plugin_type = F0R_PLUGIN_TYPE_FILTER;
    info->color_model = F0R_COLOR_MODEL_RGBA8888;
    info->frei0r_version = FREI0R_MAJOR_VERSION;
    info->major_version = kFilterMajorVersion;
    info->minor_version = kFilterMinorVersion;
    info->num_params = static_cast<int>(FilterModule::Get().Parameters().size());
    info->explanation = "Lens defocus: the frame blurred as an out-of-focus lens with a circular, elliptic, "
                        "polygonal or pictured aperture blurs it, highlights blooming into its shape";
}

__attribute__((visibility("default"))) void f0r_get_param_info(f0r_param_info_t* info, int index)
{
    const std::vector<FilterParameter>& parameters = FilterModule::Get().Parameters();
    if (!info || index < 0 || index >= static_cast<int>(parameters.size()))
        return;
    info->name = parameters[index].name.c_str();
    info->type = parameters[index].type;
    info->explanation = parameters[index].explanation.c_str();
}

__attribute__((visibility("default"))) f0r_instance_t f0r_construct(unsigned int width, unsigned int height)
{
    if (width < 1 || height < 1 || width > INT32_MAX / 4 || height > INT32_MAX / 4)
        return nullptr;
    try {
        return new FilterInstance(FilterModule::Get(), static_cast<int32_t>(width), static_cast<int32_t>(height));
    } catch (const std::exception&) {
        return nullptr;
    }
}

__attribute__((visibility("default"))) void f0r_destruct(f0r_instance_t instance) { delete instanceOf(instance); }

__attribute__((visibility("default"))) void f0r_set_param_value(f0r_instance_t instance, f0r_param_t param,
                                                                int index)
{
    try {
        if (instance)
            instanceOf(instance)->SetParameter(index, param);
    } catch (const std::exception&) {
    }
}

__attribute__((visibility("default"))) void f0r_get_param_value(f0r_instance_t instance, f0r_param_t param,
                                                                int index)
{
    if (instance)
        instanceOf(instance)->GetParameter(index, param);
}

__attribute__((visibility("default"))) void f0r_update(f0r_instance_t instance, double time,
                                                       const uint32_t* inframe, uint32_t* outframe)
{
    try {
        if (instance)
            instanceOf(instance)->Update(time, inframe, outframe);
    } catch (const std::exception&) {
    }
}

}  // extern "C"
