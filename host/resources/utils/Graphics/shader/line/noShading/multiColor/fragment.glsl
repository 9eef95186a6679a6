in vec4 g_color;

void main()
{
    writeColor(g_color);
}
