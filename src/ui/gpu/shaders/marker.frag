#version 440

layout(location = 0) in vec4 vColor;
layout(location = 1) in vec2 vAt;
layout(location = 2) in vec2 vShape;
layout(location = 0) out vec4 fragColor;

// How much of a pixel lies inside an edge that is `d` pixels away.
float covered(float d)
{
    return clamp(d + 0.5, 0.0, 1.0);
}

void main()
{
    float r = vShape.x;
    float coverage;
    if (vShape.y < 0.5) {
        coverage = covered(r - length(vAt));
    } else {
        float y = vShape.y < 1.5 ? vAt.y : -vAt.y;
        vec2 width = max(r - y + vec2(0.25, -0.25), vec2(0.0));  // in two rows of the pixel: the sides rise by 2 in 1
        vec2 rows = clamp(width * 0.5 + 0.5 - abs(vAt.x), vec2(0.0), min(width, vec2(1.0)));
        coverage = (rows.x + rows.y) * 0.5 * covered(y + r);
    }
    fragColor = vec4(vColor.rgb, vColor.a * coverage);
}
