// From the user's to placed coordinates: relative to the middle of the scene, in units of its size.
uniform vec3 u_origin;
uniform float u_scale;
uniform mat4 u_viewProjection;

in vec3 in_vertex;
in vec4 in_color;

out vec4 v_color;

void main()
{
    v_color = in_color;
    gl_Position = u_viewProjection * vec4((in_vertex - u_origin) * u_scale, 1.0);
}
