#include <tavrin/colormap/BuiltInColorMaps.hpp>

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/base/Suggestion.hpp>

#include <algorithm>
#include <iterator>
#include <span>

namespace tavrin
{

namespace
{

/// A color at `step` / 255.
struct Row
{
    int step;
    float red;
    float green;
    float blue;
};

// The tables hold those rows of the published maps of 256 colors from which linear interpolation
// reproduces all others to 0.6/255.

// Viridis, plasma, inferno and magma: Nathaniel J. Smith, Stefan van der Walt and, for viridis, Eric
// Firing, 2015; public domain (CC0).

constexpr Row viridis[] = {
    {0, 0.2670F, 0.0049F, 0.3294F},   {15, 0.2819F, 0.0897F, 0.4124F},
    {29, 0.2809F, 0.1608F, 0.4729F},  {42, 0.2680F, 0.2235F, 0.5120F},
    {57, 0.2431F, 0.2921F, 0.5385F},  {78, 0.2031F, 0.3797F, 0.5539F},
    {112, 0.1490F, 0.5081F, 0.5572F}, {134, 0.1218F, 0.5891F, 0.5456F},
    {145, 0.1214F, 0.6295F, 0.5320F}, {154, 0.1373F, 0.6623F, 0.5156F},
    {163, 0.1709F, 0.6944F, 0.4938F}, {173, 0.2264F, 0.7289F, 0.4628F},
    {185, 0.3119F, 0.7678F, 0.4156F}, {199, 0.4310F, 0.8085F, 0.3465F},
    {215, 0.5857F, 0.8467F, 0.2499F}, {234, 0.7833F, 0.8793F, 0.1254F},
    {240, 0.8456F, 0.8873F, 0.0997F}, {244, 0.8863F, 0.8924F, 0.0954F},
    {248, 0.9261F, 0.8973F, 0.1041F}, {253, 0.9744F, 0.9036F, 0.1302F},
    {255, 0.9932F, 0.9062F, 0.1439F},
};

constexpr Row plasma[] = {
    {0, 0.0504F, 0.0298F, 0.5280F},   {4, 0.0964F, 0.0252F, 0.5471F},
    {12, 0.1641F, 0.0202F, 0.5775F},  {29, 0.2806F, 0.0115F, 0.6250F},
    {45, 0.3810F, 0.0018F, 0.6531F},  {58, 0.4596F, 0.0036F, 0.6603F},
    {67, 0.5122F, 0.0188F, 0.6552F},  {76, 0.5627F, 0.0515F, 0.6415F},
    {91, 0.6410F, 0.1165F, 0.6021F},  {113, 0.7401F, 0.2139F, 0.5242F},
    {138, 0.8334F, 0.3246F, 0.4344F}, {164, 0.9128F, 0.4440F, 0.3463F},
    {186, 0.9632F, 0.5539F, 0.2719F}, {204, 0.9883F, 0.6523F, 0.2114F},
    {220, 0.9944F, 0.7470F, 0.1638F}, {231, 0.9876F, 0.8160F, 0.1444F},
    {240, 0.9744F, 0.8746F, 0.1441F}, {250, 0.9517F, 0.9417F, 0.1529F},
    {253, 0.9442F, 0.9619F, 0.1469F}, {255, 0.9400F, 0.9752F, 0.1313F},
};

constexpr Row inferno[] = {
    {0, 0.0015F, 0.0005F, 0.0139F},   {4, 0.0060F, 0.0047F, 0.0386F},
    {12, 0.0258F, 0.0193F, 0.1059F},  {24, 0.0820F, 0.0433F, 0.2153F},
    {33, 0.1358F, 0.0469F, 0.2998F},  {40, 0.1834F, 0.0403F, 0.3550F},
    {47, 0.2315F, 0.0364F, 0.3924F},  {55, 0.2843F, 0.0439F, 0.4166F},
    {67, 0.3603F, 0.0692F, 0.4315F},  {82, 0.4537F, 0.1038F, 0.4305F},
    {98, 0.5534F, 0.1391F, 0.4118F},  {114, 0.6524F, 0.1764F, 0.3756F},
    {132, 0.7584F, 0.2291F, 0.3153F}, {148, 0.8420F, 0.2929F, 0.2486F},
    {164, 0.9094F, 0.3759F, 0.1746F}, {179, 0.9545F, 0.4687F, 0.0999F},
    {192, 0.9784F, 0.5579F, 0.0349F}, {197, 0.9838F, 0.5938F, 0.0238F},
    {201, 0.9865F, 0.6231F, 0.0278F}, {205, 0.9878F, 0.6528F, 0.0456F},
    {213, 0.9862F, 0.7132F, 0.1039F}, {222, 0.9775F, 0.7823F, 0.1859F},
    {230, 0.9644F, 0.8438F, 0.2734F}, {237, 0.9515F, 0.8962F, 0.3656F},
    {244, 0.9469F, 0.9433F, 0.4750F}, {249, 0.9579F, 0.9710F, 0.5563F},
    {255, 0.9884F, 0.9984F, 0.6449F},
};

constexpr Row magma[] = {
    {0, 0.0015F, 0.0005F, 0.0139F},   {4, 0.0060F, 0.0048F, 0.0371F},
    {13, 0.0281F, 0.0232F, 0.1088F},  {28, 0.0929F, 0.0599F, 0.2392F},
    {38, 0.1468F, 0.0687F, 0.3340F},  {46, 0.1982F, 0.0639F, 0.4040F},
    {52, 0.2388F, 0.0595F, 0.4433F},  {59, 0.2850F, 0.0632F, 0.4725F},
    {69, 0.3476F, 0.0829F, 0.4941F},  {85, 0.4452F, 0.1227F, 0.5069F},
    {105, 0.5692F, 0.1675F, 0.5041F}, {123, 0.6842F, 0.2043F, 0.4842F},
    {140, 0.7924F, 0.2442F, 0.4475F}, {153, 0.8688F, 0.2877F, 0.4093F},
    {164, 0.9219F, 0.3411F, 0.3774F}, {174, 0.9558F, 0.4044F, 0.3606F},
    {183, 0.9751F, 0.4689F, 0.3631F}, {193, 0.9876F, 0.5430F, 0.3852F},
    {205, 0.9951F, 0.6317F, 0.4320F}, {220, 0.9973F, 0.7408F, 0.5110F},
    {237, 0.9935F, 0.8629F, 0.6193F}, {255, 0.9871F, 0.9914F, 0.7495F},
};

// Jamie R. Nunez, Christopher R. Anderton and Ryan S. Renslow, 2018; public domain (CC0).
constexpr Row cividis[] = {
    {0, 0.0000F, 0.1351F, 0.3048F},   {15, 0.0000F, 0.1761F, 0.4076F},
    {20, 0.0000F, 0.1888F, 0.4396F},  {22, 0.0000F, 0.1934F, 0.4416F},
    {23, 0.0036F, 0.1959F, 0.4416F},  {27, 0.0584F, 0.2066F, 0.4395F},
    {32, 0.1034F, 0.2204F, 0.4358F},  {41, 0.1597F, 0.2452F, 0.4295F},
    {56, 0.2309F, 0.2861F, 0.4235F},  {83, 0.3351F, 0.3595F, 0.4276F},
    {111, 0.4318F, 0.4370F, 0.4500F}, {129, 0.4923F, 0.4882F, 0.4715F},
    {152, 0.5782F, 0.5557F, 0.4687F}, {176, 0.6720F, 0.6293F, 0.4480F},
    {198, 0.7611F, 0.7004F, 0.4126F}, {217, 0.8407F, 0.7650F, 0.3657F},
    {232, 0.9056F, 0.8183F, 0.3129F}, {243, 0.9547F, 0.8586F, 0.2594F},
    {251, 0.9922F, 0.8884F, 0.2055F}, {252, 0.9948F, 0.8930F, 0.2034F},
    {255, 0.9957F, 0.9093F, 0.2178F},
};

// Anton Mikhailov, 2019; Copyright 2019 Google LLC, Apache License 2.0.
constexpr Row turbo[] = {
    {0, 0.1900F, 0.0718F, 0.2322F},   {5, 0.2129F, 0.1295F, 0.3731F},
    {10, 0.2324F, 0.1860F, 0.5000F},  {15, 0.2483F, 0.2414F, 0.6129F},
    {20, 0.2607F, 0.2957F, 0.7116F},  {25, 0.2697F, 0.3488F, 0.7963F},
    {30, 0.2751F, 0.4007F, 0.8669F},  {35, 0.2770F, 0.4515F, 0.9235F},
    {40, 0.2754F, 0.5012F, 0.9659F},  {44, 0.2711F, 0.5402F, 0.9893F},
    {48, 0.2586F, 0.5796F, 0.9988F},  {53, 0.2329F, 0.6292F, 0.9920F},
    {58, 0.2002F, 0.6784F, 0.9683F},  {64, 0.1584F, 0.7355F, 0.9230F},
    {72, 0.1117F, 0.8057F, 0.8452F},  {77, 0.0953F, 0.8446F, 0.7930F},
    {82, 0.0945F, 0.8784F, 0.7426F},  {86, 0.1082F, 0.9014F, 0.7060F},
    {91, 0.1439F, 0.9268F, 0.6545F},  {96, 0.1966F, 0.9490F, 0.5947F},
    {103, 0.2904F, 0.9740F, 0.5032F}, {113, 0.4432F, 0.9955F, 0.3734F},
    {120, 0.5466F, 0.9991F, 0.2958F}, {126, 0.6223F, 0.9937F, 0.2458F},
    {131, 0.6746F, 0.9825F, 0.2196F}, {137, 0.7361F, 0.9604F, 0.2050F},
    {145, 0.8141F, 0.9186F, 0.2055F}, {155, 0.8987F, 0.8509F, 0.2204F},
    {163, 0.9504F, 0.7882F, 0.2283F}, {170, 0.9800F, 0.7300F, 0.2216F},
    {178, 0.9954F, 0.6534F, 0.1958F}, {186, 0.9942F, 0.5639F, 0.1592F},
    {195, 0.9754F, 0.4574F, 0.1130F}, {205, 0.9361F, 0.3451F, 0.0662F},
    {213, 0.8930F, 0.2698F, 0.0399F}, {223, 0.8240F, 0.1918F, 0.0197F},
    {233, 0.7366F, 0.1248F, 0.0077F}, {243, 0.6308F, 0.0687F, 0.0040F},
    {253, 0.5066F, 0.0235F, 0.0086F}, {255, 0.4796F, 0.0158F, 0.0106F},
};

// From blue to red through white, between the end colors of K. Moreland, Diverging Color Maps for
// Scientific Visualization, 2009.
constexpr Row coolwarm[] = {
    {0, 59.0F / 255.0F, 76.0F / 255.0F, 192.0F / 255.0F},
    {255, 180.0F / 255.0F, 4.0F / 255.0F, 38.0F / 255.0F},
};

constexpr Row gray[] = {{0, 0.0F, 0.0F, 0.0F}, {255, 1.0F, 1.0F, 1.0F}};

constexpr Color darkRed{0.5F, 0.0F, 0.0F, 1.0F};

struct BuiltIn
{
    const char* name;
    std::span<const Row> rows;
    ColorSpace space = ColorSpace::Rgb;
    /// The color of NaN, which must not be one of the map's.
    Color notANumber{0.5F, 0.5F, 0.5F, 1.0F};
};

/// All built-in maps, in the order in which they are listed. A new one is added here.
constexpr BuiltIn builtIns[] = {
    {.name = "viridis", .rows = viridis},
    {.name = "plasma", .rows = plasma},
    {.name = "inferno", .rows = inferno},
    {.name = "magma", .rows = magma},
    {.name = "cividis", .rows = cividis},
    {.name = "turbo", .rows = turbo},
    {.name = "coolwarm", .rows = coolwarm, .space = ColorSpace::Diverging},
    {.name = "gray", .rows = gray, .notANumber = darkRed},
};

ColorMap makeColorMap(const BuiltIn& builtIn)
{
    ColorMap::Definition definition{.name = builtIn.name,
                                    .space = builtIn.space,
                                    .points = {},
                                    .notANumber = builtIn.notANumber,
                                    .below = {},
                                    .above = {}};
    for (const Row& row : builtIn.rows)
        definition.points.push_back({row.step / 255.0, {row.red, row.green, row.blue, 1.0F}});
    return ColorMap(std::move(definition));
}

}

const std::vector<std::string>& builtInColorMapNames()
{
    static const std::vector<std::string> names = []
    {
        std::vector<std::string> list;
        for (const BuiltIn& builtIn : builtIns)
            list.emplace_back(builtIn.name);
        return list;
    }();
    return names;
}

ColorMap builtInColorMap(const std::string& name)
{
    const auto* const found = std::ranges::find(builtIns, name, &BuiltIn::name);
    if (found == std::end(builtIns))
        throw usage_error("unknown color map \"" + name + "\"" +
                          suggestionFor(name, builtInColorMapNames()));
    return makeColorMap(*found);
}

}
