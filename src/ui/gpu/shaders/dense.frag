#version 440

layout(location = 0) in vec4 vColor;
layout(location = 1) in vec4 vAt;
layout(location = 2) in vec4 vReachX;
layout(location = 3) in vec4 vReachY;
layout(location = 4) in vec4 vBefore;
layout(location = 5) in vec4 vBeforeLooks;
layout(location = 0) out vec4 fragColor;

// The pixel's shares, along one axis, that lie within outline, body, fill and wick.
vec4 within(vec4 reach, vec4 distance)
{
    return clamp(reach - distance, vec4(0.0), clamp(reach * 2.0 - 1.0, vec4(0.0), vec4(1.0)));
}

// The pixel's share between two sides, given how far it lies within each, and half a pixel more.
vec2 along(vec2 inwards, vec2 backwards)
{
    return max(min(inwards, vec2(1.0)) + min(backwards, vec2(1.0)) - 1.0, vec2(0.0));
}

void main()
{
    vec4 x = within(vReachX, vec4(abs(vAt.x)));
    vec4 y = within(vReachY, abs(vAt.zzzy));
    float filled = x.z * y.z;
    float lines = x.x * y.y + x.y * (y.x - y.y) - filled  // an outline without its corners
                  + x.w * (y.w - y.x);
    float alpha = vColor.a * (lines + filled * vAt.w);
    // Where it shares the pixel with the candle before it, that one's share is taken: blending alone would let the
    // ground through between two that together cover the pixel.
    vec2 inwards = vBefore.xy, backwards = vBefore.zw;
    vec2 outer = along(inwards, backwards);
    inwards -= vBeforeLooks.x;
    backwards -= vBeforeLooks.x;
    vec2 body = along(inwards, backwards);
    vec2 hole = along(inwards - vBeforeLooks.x, backwards - vBeforeLooks.x);
    float hollow = vBeforeLooks.x > 0.0 ? 1.0 - vAt.w : 0.0;
    float before = (outer.x * body.y + body.x * (outer.y - body.y) - hole.x * hole.y * hollow) * vBeforeLooks.y;
    // Outlines may overlap, beside both bodies.
    inwards.x += vBeforeLooks.x;
    backwards.x += vBeforeLooks.x;
    vec2 reach = vec2(vReachX.x, vReachY.y);
    vec2 both = along(min(inwards, reach + vAt.xz), min(backwards, reach - vAt.xz));
    float free = (alpha - both.x * both.y * vColor.a * vBeforeLooks.y) / max(1.0 - before, 0.004);
    fragColor = vec4(vColor.rgb, clamp(free, 0.0, 1.0));
}
