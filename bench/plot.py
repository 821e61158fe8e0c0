"""Draws cost against size as SVG, both on logarithmic scales."""

import math

WIDTH, HEIGHT, LEFT, RIGHT, TOP, BOTTOM = 640, 360, 64, 130, 40, 48
COLORS = {
    "ours": "#c0392b",
    "ours, ring on": "#e67e22",
    "floor": "#2c3e50",
    "std": "#7f8c8d",
    "absl": "#2980b9",
}


def decades(low, high):
    return range(math.floor(math.log10(low)), math.ceil(math.log10(high)) + 1)


def plot(path, title, axis, lines):
    """lines: {who: [(size, nanoseconds), ...]}"""
    points = [point for line in lines.values() for point in line]
    if not points:
        return
    sizes = decades(min(x for x, _ in points), max(x for x, _ in points))
    costs = decades(min(y for _, y in points), max(y for _, y in points))

    def x_of(size):
        share = (math.log10(size) - sizes[0]) / (sizes[-1] - sizes[0])
        return LEFT + share * (WIDTH - LEFT - RIGHT)

    def y_of(cost):
        share = (math.log10(cost) - costs[0]) / (costs[-1] - costs[0])
        return HEIGHT - BOTTOM - share * (HEIGHT - TOP - BOTTOM)

    out = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{HEIGHT}" '
        'font-family="sans-serif" font-size="12">',
        '<rect width="100%" height="100%" fill="white"/>',
        f'<text x="{LEFT}" y="22" font-size="15">{title}, ns</text>',
        f'<text x="{(LEFT + WIDTH - RIGHT) / 2}" y="{HEIGHT - 10}" text-anchor="middle">'
        f"{axis}</text>",
    ]
    for power in sizes:
        x = x_of(10**power)
        out.append(
            f'<path d="M{x:.1f} {TOP}V{HEIGHT - BOTTOM}" stroke="#ddd"/>'
            f'<text x="{x:.1f}" y="{HEIGHT - BOTTOM + 18}" text-anchor="middle">{10**power:,}</text>'
        )
    for power in costs:
        y = y_of(10.0**power)
        out.append(
            f'<path d="M{LEFT} {y:.1f}H{WIDTH - RIGHT}" stroke="#ddd"/>'
            f'<text x="{LEFT - 8}" y="{y + 4:.1f}" text-anchor="end">{10.0**power:g}</text>'
        )
    for at, (who, line) in enumerate(lines.items()):
        color = COLORS.get(who, "#000")
        way = " ".join(f"{x_of(size):.1f},{y_of(cost):.1f}" for size, cost in line)
        y = TOP + 10 + 18 * at
        out.append(
            f'<polyline points="{way}" fill="none" stroke="{color}" stroke-width="2"/>'
            f'<path d="M{WIDTH - RIGHT + 10} {y}h18" stroke="{color}" stroke-width="2"/>'
            f'<text x="{WIDTH - RIGHT + 34}" y="{y + 4}">{who}</text>'
        )
    out.append("</svg>\n")
    with open(path, "w") as file:
        file.write("\n".join(out))
