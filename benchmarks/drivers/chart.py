# SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
# SPDX-License-Identifier: BSD-3-Clause

"""Draws a chart of ratios as an SVG image."""

LEFT, WIDTH, LINE, TOP = 190, 420, 22, 40


def draw(title, bars):
    """An SVG image of the bars, pairs of a name and a ratio, with a line at the ratio 1."""
    longest = max(ratio for _, ratio in bars)
    one = LEFT + WIDTH / longest
    height = TOP + LINE * len(bars) + 10
    lines = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{LEFT + WIDTH + 60}" height="{height}"'
        ' font-family="sans-serif" font-size="12">',
        # REUSE-IgnoreStart
        "<!-- SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors -->",
        "<!-- SPDX-License-Identifier: BSD-3-Clause -->",
        # REUSE-IgnoreEnd
        '<rect width="100%" height="100%" fill="white"/>',
        f'<text x="{LEFT}" y="20" font-size="14">{title}</text>',
    ]
    for number, (name, ratio) in enumerate(bars):
        y = TOP + LINE * number
        length = WIDTH * ratio / longest
        color = "#3a7d44" if ratio <= 1 else "#c77d0a"
        lines += [
            f'<text x="{LEFT - 8}" y="{y + 13}" text-anchor="end">{name}</text>',
            f'<rect x="{LEFT}" y="{y}" width="{length:.1f}" height="{LINE - 6}" fill="{color}"/>',
            f'<text x="{LEFT + length + 5:.1f}" y="{y + 13}">{ratio:.2f}</text>',
        ]
    lines.append(
        f'<line x1="{one:.1f}" y1="{TOP - 8}" x2="{one:.1f}" y2="{height - 6}" stroke="black"'
        ' stroke-dasharray="4 3"/>'
    )
    return "\n".join(lines + ["</svg>"]) + "\n"
