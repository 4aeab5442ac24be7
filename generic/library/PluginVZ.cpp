#include "generic/library/PluginVZ.h"

#include "generic/library/RunFourThreads.h"
#include "hostsdk/IDSImageEffectHost.h"

PluginVZ::PluginVZ()
    : time(0.0),
      frame(0.0),
      colourEnabled(1),
      alphaEnabled(1),
      owner(nullptr),
      renderMonitor(nullptr),
      jobFunction(nullptr),
      jobArgument(nullptr),
      channelMask(15),
      defaultRate(25.0)
{
}

PluginVZ::~PluginVZ() = default;

void PluginVZ::Render() {}
void PluginVZ::Reserved2(const uint32_t*) {}
void PluginVZ::UpdateControls() {}
void PluginVZ::Reserved4(uint32_t, uint32_t) {}
void PluginVZ::Reserved5(uint32_t) {}
void PluginVZ::Reserved6() {}
void PluginVZ::Reserved7() {}
void PluginVZ::Reserved8(uint32_t) {}
void PluginVZ::Reserved9(uint32_t, uint32_t) {}

void PluginVZ::runSlice(void* object, int first, int last)
{
    const PluginVZ* plugin = static_cast<const PluginVZ*>(object);
    plugin->jobFunction(plugin->jobArgument, first, last);
}

void PluginVZ::RunRows(void* context, FftRowJob job, int rowCount, FftEngine* argument)
{
    PluginVZ* plugin = static_cast<PluginVZ*>(context);
    plugin->jobFunction = job;
    plugin->jobArgument = argument;
    RunFourThreads(plugin, runSlice, rowCount);
}

int PluginVZ::ShouldAbort(void* context)
{
    const PluginVZ* plugin = static_cast<const PluginVZ*>(context);
    if (!plugin || !plugin->renderMonitor)
        return 0;
    return plugin->renderMonitor->ShouldContinue() <= 0 ? 1 : 0;
}
