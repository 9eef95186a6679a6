layout(lines) in;
layout(triangle_strip, max_vertices = 4) out;

// The size of the viewport in pixels, the number of pixels that lengths in the picture are multiples of, and the width
// of the segments in units of it.
uniform vec2 u_viewport;
uniform float u_unit;
uniform float u_lineWidth;

in vec4 v_color[];

out vec4 g_color;

// In pixels; samples would miss parts of a thinner segment.
const float minimumWidth = 1.0;
// The fourth clip coordinate just in front of the eye.
const float nearest = 1e-6;

void emit(vec4 position, vec2 offset, vec4 color)
{
    g_color = color;
    gl_Position = vec4(position.xy + offset * position.w, position.zw);
    EmitVertex();
}

void main()
{
    vec4 start = gl_in[0].gl_Position;
    vec4 end = gl_in[1].gl_Position;
    if (isnan(dot(start, start) + dot(end, end)) || max(start.w, end.w) <= nearest)
        return;
    if (start.w < nearest)
        start = mix(end, start, (end.w - nearest) / (end.w - start.w));
    if (end.w < nearest)
        end = mix(start, end, (start.w - nearest) / (start.w - end.w));

    vec2 along = (end.xy / end.w - start.xy / start.w) * u_viewport;
    float pixels = length(along);
    along = pixels > 0.0 ? along / pixels : vec2(1.0, 0.0);
    vec2 halfWidth = max(u_lineWidth * u_unit, minimumWidth) / u_viewport;
    vec2 across = vec2(-along.y, along.x) * halfWidth;
    // A segment of length 0 becomes a square dot.
    vec2 beyond = pixels > 0.0 ? vec2(0.0) : along * halfWidth;

    emit(start, across - beyond, v_color[0]);
    emit(start, -across - beyond, v_color[0]);
    emit(end, across + beyond, v_color[1]);
    emit(end, -across + beyond, v_color[1]);
    EndPrimitive();
}
