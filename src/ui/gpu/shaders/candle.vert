#version 440

layout(location = 0) in vec4 corners;  // data space: a side of the body and an end of the wick, and the others
layout(location = 1) in vec4 shape;    // where the body begins and ends in y, the wick's share of its width, half the
                                       // stroke of its outline in points
layout(location = 2) in float fill;    // opacity within an outline
layout(location = 3) in vec4 before;   // where the bodies of the candles one bar to the left and two begin and end
layout(location = 4) in vec4 beforeLooks;  // of either half the stroke in points, and the opacity
layout(location = 5) in vec4 color;
layout(location = 0) out vec4 vColor;
layout(location = 1) out vec4 vAt;      // device pixels from the middle of body and wick, x and y; opacity of the fill
layout(location = 2) out vec4 vReachX;  // pixels from the middle to half a pixel beyond the sides of the outline, the
                                        // body, what it fills, the wick
layout(location = 3) out vec4 vReachY;  // the same upwards
layout(location = 4) out vec4 vBefore;  // from half a pixel beyond the left, top, right and bottom of the candle one bar
                                        // to the left inwards
layout(location = 5) out vec4 vBeforeLooks;  // half the stroke of its outline; its opacity; the same of the one before
layout(location = 6) out vec4 vEarlier;      // vBefore of the candle two bars to the left

layout(std140, binding = 0) uniform Block {
    mat4 place;
    vec4 map;     // xScale, xOffset, yScale, yOffset
    vec4 view;    // width, height of the view
    vec4 device;  // pixels a point; 1 where a pixel has one sample, 0 where it has several
} u;

// How far a place lies within half a pixel beyond the left and top of a candle's outline, and the right and bottom. Its
// x counts from the candle's middle.
vec4 inwards(vec2 place, vec2 body, float halfWidth, float stroke)
{
    vec2 reach = vec2(halfWidth, abs(body.x - body.y) * 0.5) + stroke + 0.5;
    vec2 away = place - vec2(0.0, (body.x + body.y) * 0.5);
    return vec4(reach + away, reach - away);
}

void main()
{
    vec2 size = u.view.xy * u.device.x;
    vec4 clip = corners * u.map.xzxz + u.map.ywyw;
    vec4 at = (clip * vec4(0.5, -0.5, 0.5, -0.5) + 0.5) * size.xyxy;
    vec2 body = (0.5 - (shape.xy * u.map.z + u.map.w) * 0.5) * size.y;
    vec2 bodyEnds = vec2(min(body.x, body.y), max(body.x, body.y));
    float stroke = shape.w * u.device.x, hollow = stroke > 0.0 ? 1.0 : 0.0;
    // The wick reaches at least as far as the outline, so that what stands out of it is the difference.
    vec2 ends = vec2(min(min(at.y, at.w), bodyEnds.x - stroke), max(max(at.y, at.w), bodyEnds.y + stroke));
    vec2 middle = vec2((at.x + at.z) * 0.5, (ends.x + ends.y) * 0.5);
    float bodyMiddle = (body.x + body.y) * 0.5;
    vec2 extent = vec2(abs(at.x - at.z), bodyEnds.y - bodyEnds.x) * 0.5;
    vec2 filled = extent - stroke - (1.0 - hollow) * 1e6;
    vReachX = vec4(extent.x + stroke, extent.x, filled.x, extent.x * shape.z) + 0.5;
    vReachY = vec4(extent.y + stroke, extent.y, filled.y, (ends.y - ends.x) * 0.5) + 0.5;
    vec2 side = vec2(sign(at.x - at.z), at.y < at.w ? -1.0 : 1.0);
    // With the pixels that are covered in part: their middles, or all of them where they have samples.
    vec2 corner = middle + side * (vec2(extent.x + stroke, (ends.y - ends.x) * 0.5) + 1.0 - 0.5 * u.device.y);
    vAt = vec4(corner - middle, corner.y - bodyMiddle, fill);
    vec4 beforeY = (0.5 - (before * u.map.z + u.map.w) * 0.5) * size.y;
    vBeforeLooks = beforeLooks * vec4(u.device.x, 1.0, u.device.x, 1.0);
    vec2 bar = vec2(u.map.x * size.x * 0.5, 0.0);
    vBefore = inwards(corner - vec2(middle.x, 0.0) + bar, beforeY.xy, extent.x, vBeforeLooks.x);
    vEarlier = inwards(corner - vec2(middle.x, 0.0) + bar * 2.0, beforeY.zw, extent.x, vBeforeLooks.z);
    vColor = color;
    gl_Position = u.place * vec4(corner.x / size.x * 2.0 - 1.0, 1.0 - corner.y / size.y * 2.0, 0.0, 1.0);
}
