// Precedes every fragment shader: how a color gets into the picture.
// Transparent colors are added up with weights that fall with the distance, so that the order of drawing does not
// matter (M. McGuire, L. Bavoil, "Weighted Blended Order-Independent Transparency", JCGT 2013).

// 0: everything is opaque, 1: only what is opaque, 2: only what is transparent.
uniform int u_pass;
// The nearest and the farthest distance from the eye, and 1 for a parallel projection or 0.
uniform vec3 u_depth;

layout(location = 0) out vec4 out_color;
layout(location = 1) out vec4 out_weight;

// Interpolation and the eight bits of a color leave a full alpha just below 1.
const float opaqueAlpha = 254.5 / 255.0;

// Writes a color of which the pass is known to draw all.
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

// Writes a color if the pass draws it. Drivers test the depth of a fragment late where it may be discarded.
void writeColor(vec4 color)
{
    bool isOpaque = color.a >= opaqueAlpha;
    if (u_pass == 1 && !isOpaque || u_pass == 2 && (isOpaque || color.a <= 0.0))
        discard;
    writeColorOfPass(color);
}
