uniform vec3 u_right;
uniform vec3 u_up;
uniform float u_isFlat;
// How bright a flat arrow is drawn.
uniform float u_brightness;

in vec3 v_normal;
in vec3 v_towardsEye;
in vec4 v_color;

void main()
{
    vec3 towardsEye = normalize(v_towardsEye);
    vec3 normal = normalize(v_normal);
    float facing = dot(normal, towardsEye);
    if (facing < 0.0)
        normal = -normal;
    facing = abs(facing);

    // A light near the eye, shifted to the upper left.
    vec3 towardsLight = normalize(towardsEye + 0.45 * u_up - 0.3 * u_right);
    float diffuse = max(dot(normal, towardsLight), 0.0);
    float specular = pow(max(dot(normal, normalize(towardsLight + towardsEye)), 0.0), 48.0);
    // Darker where the surface turns away, so that bright colors stand out from a bright background.
    float rim = mix(0.7, 1.0, smoothstep(0.0, 0.4, facing));

    vec3 shaded = v_color.rgb * (0.5 + 0.55 * diffuse) * rim + vec3(0.16 * specular);
    // A flat arrow keeps its color, so that it agrees with the color bar.
    writeColorOfPass(vec4(min(mix(shaded, v_color.rgb * u_brightness, u_isFlat), 1.0), v_color.a));
}
