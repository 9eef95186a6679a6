// Prepended to every fragment shader: writes a color into the picture.
// Transparent colors are summed with weights that decrease with the distance, so that the order of drawing does not
// matter (M. McGuire, L. Bavoil, "Weighted Blended Order-Independent Transparency", JCGT 2013).

// 0: draws everything as opaque, 1: only opaque colors, 2: only transparent colors.
uniform int u_pass;
// The nearest and the farthest distance from the eye, and 1 for a parallel projection or 0.
uniform vec3 u_depth;

layout(location = 0) out vec4 out_color;
layout(location = 1) out vec4 out_weight;

// After interpolation and rounding to eight bits, an alpha of 1 may be slightly less.
const float opaqueAlpha = 254.5 / 255.0;

// Writes a color that the current pass is known to draw.
void writeColorOfPass(vec4 color)
{
    if (u_pass == 2)
    {
        float perspectiveDepth = (1.0 / gl_FragCoord.w - u_depth.x) / (u_depth.y - u_depth.x);
        float depth = clamp(u_depth.z > 0.5 ? gl_FragCoord.z : perspectiveDepth, 0.0, 1.0);
        float weight = color.a * exp(-10.0 * depth);
        out_color = vec4(color.rgb * weight, color.a);
        out_weight = vec4(weight);
    }
    else
    {
        out_color = vec4(color.rgb, 1.0);
        out_weight = vec4(0.0);
    }
}

// Writes a color if the current pass draws it. A shader that may discard fragments is slower, because drivers write
// their depths late.
void writeColor(vec4 color)
{
    bool isOpaque = color.a >= opaqueAlpha;
    if (u_pass == 1 && !isOpaque || u_pass == 2 && (isOpaque || color.a <= 0.0))
        discard;
    writeColorOfPass(color);
}
