// The weighted mean of the transparent colors, with the opacity of all of them.
uniform sampler2D u_colors;
uniform sampler2D u_weights;

void main()
{
    ivec2 pixel = ivec2(gl_FragCoord.xy);
    vec4 colors = texelFetch(u_colors, pixel, 0);
    float weight = texelFetch(u_weights, pixel, 0).r;
    if (weight <= 0.0)
        discard;
    float opacity = 1.0 - colors.a;
    out_color = vec4(colors.rgb / weight * opacity, opacity);
    out_weight = vec4(0.0);
}
