# SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
# SPDX-License-Identifier: BSD-3-Clause

"""Draws a chart of ratios as an SVG image."""

LEFT, WIDTH, LINE, TOP = 190, 420, 22, 62

# REUSE-IgnoreStart
HEAD = """<svg xmlns="http://www.w3.org/2000/svg" role="img" viewBox="0 0 {width} {height}"
 width="{width}">
<!-- SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors -->
<!-- SPDX-License-Identifier: BSD-3-Clause -->
<title>{title}</title>
<style>
text {{ font: 12px sans-serif; fill: #24292f }}
.title {{ font-size: 14px }}
.paper {{ fill: #ffffff }}
.bar {{ fill: #2f6fb0 }}
line {{ stroke: #24292f; stroke-dasharray: 4 3 }}
@media (prefers-color-scheme: dark) {{
text {{ fill: #e6edf3 }}
.paper {{ fill: #161b22 }}
.bar {{ fill: #4f8fd0 }}
line {{ stroke: #e6edf3 }}
}}
</style>
<rect class="paper" width="{width}" height="{height}"/>
<text class="title" x="20" y="24">{title}</text>"""
# REUSE-IgnoreEnd


def draw(title, line_label, bars):
    """An SVG image of the bars, pairs of a name and a ratio, with a labeled line at the ratio 1."""
    longest = max(ratio for _, ratio in bars)
    one = LEFT + WIDTH / longest
    height = TOP + LINE * len(bars) + 10
    lines = [HEAD.format(title=title, width=LEFT + WIDTH + 60, height=height)]
    for number, (name, ratio) in enumerate(bars):
        y = TOP + LINE * number
        length = WIDTH * ratio / longest
        lines += [
            f'<text x="{LEFT - 8}" y="{y + 13}" text-anchor="end">{name}</text>',
            f'<rect class="bar" x="{LEFT}" y="{y}" width="{length:.1f}" height="{LINE - 6}"/>',
            f'<text x="{LEFT + WIDTH + 5}" y="{y + 13}">{ratio:.2f}</text>',
        ]
    lines += [
        f'<text x="{one:.1f}" y="{TOP - 14}" text-anchor="middle">{line_label}</text>',
        f'<line x1="{one:.1f}" y1="{TOP - 8}" x2="{one:.1f}" y2="{height - 6}"/>',
    ]
    return "\n".join(lines + ["</svg>"]) + "\n"
