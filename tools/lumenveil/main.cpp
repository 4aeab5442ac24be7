// lumenveil: the command-line host of the Lumenveil effect module.
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "tools/lumenveil/cli_error.h"
#include "tools/lumenveil/demo_command.h"
#include "tools/lumenveil/depth_render.h"
#include "tools/lumenveil/focus_command.h"
#include "embed/effect_instance.h"
#include "embed/effect_module.h"
#include "tools/lumenveil/info_command.h"
#include "tools/lumenveil/installed_docs.h"
#include "tools/lumenveil/interrupt.h"
#include "tools/lumenveil/option_suggestion.h"
#include "tools/lumenveil/page_command.h"
#include "embed/module_locator.h"
#include "tools/lumenveil/parameter_options.h"
#include "tools/lumenveil/render_command.h"

namespace {

// --module is read before the options are built, since the parameter
// options come from the module.
std::string modulePathFromArguments(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--module") == 0 && i + 1 < argc)
            return argv[i + 1];
        if (std::strncmp(argv[i], "--module=", 9) == 0)
            return argv[i] + 9;
    }
    return "";
}

int report(const char* message, int code)
{
    std::fprintf(stderr, "lumenveil: %s\n", message);
    return code;
}

}  // namespace

// The module stays loaded until the process ends: unloading it while the
// transform library's worker threads are still winding down crashes them.
EffectModule* g_loadedModule = nullptr;

namespace {

// The subcommands, with what their options fill.
struct Commands {
    RenderRequest request;
    FocusRequest focusRequest;
    std::string demoDirectory = "lumenveil-demo";
    bool depthPage = false;
    CLI::App* render = nullptr;
    CLI::App* demo = nullptr;
    CLI::App* info = nullptr;
    CLI::App* page = nullptr;
    CLI::App* formats = nullptr;
    CLI::App* focus = nullptr;
    std::unique_ptr<ParameterOptions> focusParameters;
    std::unique_ptr<ParameterOptions> renderParameters;
    std::unique_ptr<ParameterOptions> pageParameters;
};

void addCommands(CLI::App& app, Commands& c, const std::vector<Parameter>& parameters)
{
    c.render = app.add_subcommand("render", "Defocus an image file or a numbered sequence");
    addRenderOptions(*c.render, c.request);
    c.renderParameters = std::make_unique<ParameterOptions>(*c.render, parameters);
    c.render->footer("Values outside a parameter's page range are refused. `lumenveil info` lists the parameters.");
    c.demo = app.add_subcommand("demo", "Render a built-in night scene with a few apertures");
    c.demo->add_option("--out", c.demoDirectory, "Directory for the pictures")->capture_default_str();
    c.info = app.add_subcommand("info", "The effect's name, class, inputs and parameters");
    c.page = app.add_subcommand("page", "The effect's property page as text, for the parameters given");
    c.page->add_flag("--depth", c.depthPage, "Lumenveil Depth's page, with its depth controls");
    c.pageParameters = std::make_unique<ParameterOptions>(*c.page, parameters);
    c.formats = app.add_subcommand("formats", "The host pixel formats and the image file formats");
    c.focus = app.add_subcommand("focus", "The depth and blur radius of one pixel of a depth map (Lumenveil Depth)");
    addFocusOptions(*c.focus, c.focusRequest);
    c.focusParameters = std::make_unique<ParameterOptions>(*c.focus, parameters);
}

// Runs the subcommand given; the exit code.
int runCommand(const Commands& c, const EffectModule* module, const std::string& moduleError)
{
    try {
        if (c.formats->parsed()) {
            printFormats();
            return 0;
        }
        if (!module)
            throw Failure(moduleError);
        if (c.render->parsed())
            runRender(*module, c.request, *c.renderParameters);
        else if (c.demo->parsed())
            runDemo(*module, c.demoDirectory);
        else if (c.info->parsed())
            printEffectInfo(*module);
        else if (c.page->parsed())
            printPage(*module, *c.pageParameters, c.depthPage);
        else if (c.focus->parsed())
            printFocus(*module, c.focusRequest, *c.focusParameters);
    } catch (const UsageError& e) {
        return report(e.what(), kExitUsage);
    } catch (const Interrupted& e) {
        return report(e.what(), kExitInterrupted);
    } catch (const Failure& e) {
        return report(e.what(), kExitFailure);
    } catch (const CLI::ParseError& e) {
        return report(e.what(), kExitUsage);
    } catch (const std::exception& e) {
        return report(e.what(), kExitFailure);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    watchInterrupts();
    useInstalledHelpPage();
    std::string modulePath = modulePathFromArguments(argc, argv);
    EffectModule* module = nullptr;
    std::string moduleError;
    std::vector<Parameter> parameters;
    try {
        g_loadedModule = new EffectModule(locateModule(modulePath));
        module = g_loadedModule;
        parameters = toolParameters(*module);
    } catch (const Failure& failure) {
        moduleError = failure.what();
    }

    CLI::App app{"lumenveil: lens defocus for image files and sequences, through the Lumenveil effect module"};
    app.set_version_flag("--version", std::string("lumenveil ") + LUMENVEIL_VERSION);
    app.add_option("--module", modulePath,
                   "Path of the effect module (libLumenveilVZ.so); default $LUMENVEIL_MODULE, then beside the program");
    app.require_subcommand(1);
    if (const std::string docs = documentsDirectory(); !docs.empty())
        app.footer("User guide: " + docs + "/user-guide.md");
    Commands commands;
    addCommands(app, commands, parameters);
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        const CLI::App* chosen = nullptr;
        for (const CLI::App* command : app.get_subcommands({}))
            if (command->parsed())
                chosen = command;
        std::fprintf(stderr, "lumenveil: %s%s\nRun 'lumenveil %s--help' for the options.\n", e.what(),
                     suggestOption(app, chosen, argc, argv).c_str(), commands.render->parsed() ? "render " : "");
        return kExitUsage;
    }
    if (interruptRequested())
        return report("interrupted before the command started; nothing written", kExitInterrupted);
    return runCommand(commands, module, moduleError);
}
