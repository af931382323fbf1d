#version 440

layout(location = 0) in vec4 corners;  // data space: a side of the body and an end of the wick, and the others
layout(location = 1) in vec4 shape;    // where the body begins and ends in y, the wick's share of its width, half the
                                       // stroke of its outline in points
layout(location = 2) in float fill;    // opacity within an outline
layout(location = 3) in vec4 before;   // the same of the candle one bar to the left: body, half the stroke; opacity
layout(location = 4) in vec4 color;
layout(location = 0) out vec4 vColor;
layout(location = 1) out vec4 vAt;      // device pixels from the middle of body and wick, x and y; opacity of the fill
layout(location = 2) out vec4 vReachX;  // pixels from the middle to half a pixel beyond the sides of the outline, the
                                        // body, what it fills, the wick
layout(location = 3) out vec4 vReachY;  // the same upwards
layout(location = 4) out vec4 vBefore;  // from half a pixel beyond the left, top, right and bottom of that candle inwards
layout(location = 5) out vec2 vBeforeLook;  // half the stroke of its outline; its opacity

layout(std140, binding = 0) uniform Block {
    mat4 place;
    vec4 map;     // xScale, xOffset, yScale, yOffset
    vec4 view;    // width, height of the view
    vec4 device;  // pixels a point
} u;

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
    vec2 corner = middle + side * (vec2(extent.x + stroke, (ends.y - ends.x) * 0.5) + 1.0);  // with what is partly covered
    vAt = vec4(corner - middle, corner.y - bodyMiddle, fill);
    vec2 beforeY = (0.5 - (before.xy * u.map.z + u.map.w) * 0.5) * size.y;
    float beforeStroke = before.z * u.device.x;
    vec2 beforeMiddle = vec2(middle.x - u.map.x * size.x * 0.5, (beforeY.x + beforeY.y) * 0.5);
    vec2 beforeReach = vec2(extent.x, abs(beforeY.x - beforeY.y) * 0.5) + beforeStroke + 0.5;
    vBefore = vec4(beforeReach + (corner - beforeMiddle), beforeReach - (corner - beforeMiddle));
    vBeforeLook = vec2(beforeStroke, before.w);
    vColor = color;
    gl_Position = u.place * vec4(corner.x / size.x * 2.0 - 1.0, 1.0 - corner.y / size.y * 2.0, 0.0, 1.0);
}
