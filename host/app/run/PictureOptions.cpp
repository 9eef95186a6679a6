#include "PictureOptions.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace tavrin::app
{

void PictureOptions::declare(CLI::App& syntax)
{
    syntax.add_option("--size", mWords.size, "size of pictures in pixels, 1280x960")
        ->type_name("WIDTHxHEIGHT");
    syntax.add_option("--background", mWords.background, "background of pictures, #ffffff")
        ->type_name("COLOR");
    syntax
        .add_option(
            "--view", mWords.view,
            "direction to the viewer: x, -x, y, -y, z, -z, iso, or AZIMUTH,ELEVATION in degrees")
        ->type_name("VIEW");
    syntax.add_option("--title", mWords.title, "title above pictures")->type_name("TEXT");
    syntax.add_option("--font-scale", mWords.fontScale, "factor of the size of texts, 1")
        ->type_name("FACTOR");
    syntax.add_flag("--crop", mWords.crop, "crops pictures to what is drawn");
    syntax
        .add_option("--arrows", mArrows,
                    "shows at most so many values, evenly spread, always the same ones")
        ->type_name("N");
}

void PictureOptions::applyTo(pipeline::Plan& plan) const
{
    if (!mWords.isEmpty() &&
        std::ranges::none_of(plan.outputs, &pipeline::OutputRequest::isPicture))
        throw usage_error("--size, --background, --view, --title, --font-scale and --crop are for "
                          "pictures; no output is a .png, .svg or .pdf file");
    // Throws for a malformed word before anything is read.
    static_cast<void>(mWords.options());
    if (mArrows && std::ranges::none_of(plan.outputs, &pipeline::OutputRequest::isGraphics))
        throw usage_error("--arrows is for graphics; no output is graphics");
    for (pipeline::OutputRequest& request : plan.outputs)
    {
        request.picture = mWords;
        if (mArrows && request.isGraphics)
            plan.steps.at(request.step).maximumArrows = pipeline::parseMaximumArrows(*mArrows);
    }
}

}
