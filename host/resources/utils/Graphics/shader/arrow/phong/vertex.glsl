uniform mat4 u_viewProjection;
// The position of the eye, or the direction toward it in a parallel projection.
uniform vec3 u_eye;
uniform float u_isParallel;
// The number of pixels per unit of length where the fourth clip coordinate is 1.
uniform float u_pixelsPerUnit;
// The number of pixels that lengths in the picture are multiples of.
uniform float u_unit;
uniform vec3 u_right;

// Vertex of the mesh: across the arrow and toward the eye in units of its width, along it in units of its length.
in vec3 in_position;
in vec3 in_normal;
// The arrow.
in vec3 in_start;
in vec3 in_direction;
in float in_width;
in vec4 in_color;

out vec3 v_normal;
out vec3 v_towardsEye;
out vec4 v_color;

// In units of the picture, but at least in pixels: samples would miss parts of a smaller arrow.
const float minimumWidth = 1.0;
const float minimumLength = 2.0;

void main()
{
    vec3 middle = in_start + 0.5 * in_direction;
    float pixel = (u_viewProjection * vec4(middle, 1.0)).w / u_pixelsPerUnit * max(u_unit, 1.0);
    vec3 towardsEye = u_isParallel > 0.5 ? u_eye : normalize(u_eye - middle);

    float trueLength = length(in_direction);
    vec3 axis = trueLength > 0.0 ? in_direction / trueLength : u_right;
    float arrowLength = max(trueLength, minimumLength * pixel);
    float arrowWidth = max(in_width, minimumWidth * pixel);

    vec3 side = cross(towardsEye, axis);
    // For an arrow that points at the eye, any side will do.
    if (dot(side, side) < 1e-8)
        side = cross(abs(axis.z) < 0.7 ? vec3(0.0, 0.0, 1.0) : vec3(1.0, 0.0, 0.0), axis);
    side = normalize(side);
    vec3 front = cross(axis, side);

    vec3 position = middle + arrowWidth * (in_position.x * side + in_position.y * front)
                    + arrowLength * (in_position.z - 0.5) * axis;
    v_normal = arrowLength * (in_normal.x * side + in_normal.y * front) + arrowWidth * in_normal.z * axis;
    // The squares of the tiny normals of a tiny arrow would underflow.
    v_normal /= max(arrowLength, arrowWidth);
    v_towardsEye = u_isParallel > 0.5 ? u_eye : u_eye - position;
    v_color = in_color;
    gl_Position = u_viewProjection * vec4(position, 1.0);
}
