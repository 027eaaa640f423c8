"""A bar chart of a group as SVG text: the same figures give the same bytes. Its colours stand out on light and on
dark pages alike."""

import math
from xml.sax.saxutils import escape

WIDTH = 720
LABEL_END = 210
BAR_START = 220
BAR_END = 640
ROW = 20
BAR = 13
LONGEST_TIME = 4.0  # times the peer's; longer bars are broken off, their numbers stand beside them

STYLE = """\
text { font: 12px system-ui, sans-serif; fill: #737d88; }
.title { font-size: 15px; font-weight: 600; }
.input { font-weight: 600; }
.label { text-anchor: end; }
.own { fill: #2f81f7; }
text.own { font-weight: 600; }
.peer { fill: #9aa4af; }
.limit { fill: none; stroke: #9aa4af; stroke-dasharray: 3 2; }
.one { stroke: #737d88; stroke-width: 1; opacity: 0.6; }
.aim { stroke: #d29922; stroke-width: 3; }
.break { stroke: #737d88; stroke-width: 2; }
"""


class Canvas:
    def __init__(self):
        self.parts = []
        self.y = 0

    def text(self, x, y, content, style=""):
        self.parts.append(f'<text x="{x:g}" y="{y:g}" class="{style}">{escape(content)}</text>')

    def line(self, x, top, bottom, style):
        self.parts.append(f'<line x1="{x:.1f}" y1="{top:g}" x2="{x:.1f}" y2="{bottom:g}" class="{style}"/>')

    def bar(self, width, style, start=BAR_START):
        top = self.y + (ROW - BAR) / 2
        self.parts.append(f'<rect x="{start:.1f}" y="{top:g}" width="{max(width, 1):.1f}" height="{BAR}" rx="2" '
                          f'class="{style}"/>')


def longest(group):
    ratios = [ratio for one in group.ratios.values() for ratio in one.values()]
    aims = [aim for aim in map(group.bound, group.ratios) if aim is not None]
    greatest = max(ratios + aims + [1.0])
    return greatest if group.measure == "throughput" else min(greatest, LONGEST_TIME)


def draw_row(canvas, group, who, ratio, text, own, scale, aim):
    style = "own" if who == own else "limit" if who in group.limits else "peer"
    canvas.text(LABEL_END, canvas.y + 14, who, "label own" if who == own else "label")
    length = min(ratio * scale, BAR_END - BAR_START)
    canvas.bar(length, style)
    end = BAR_START + length
    if ratio * scale > length + 0.01:
        for back in (8, 13):
            canvas.line(end - back, canvas.y + 2, canvas.y + ROW - 2, "break")
    if who == own and aim is not None and aim * scale <= BAR_END - BAR_START:
        canvas.line(BAR_START + aim * scale, canvas.y + 1, canvas.y + ROW - 1, "aim")
        end = max(end, BAR_START + aim * scale)
    canvas.text(end + 6, canvas.y + 14, text, "own" if who == own else "")
    canvas.y += ROW


def draw_input(canvas, group, name, own, number, scale):
    ratios = group.ratios[name]
    if not ratios:
        return
    canvas.y += 8
    canvas.text(16, canvas.y + 14, name, "input")
    canvas.y += ROW
    top = canvas.y
    for who in sorted(ratios, key=lambda who: group.rank(name, who)):
        draw_row(canvas, group, who, ratios[who], number(ratios[who]), own, scale, group.bound(name))
    canvas.line(BAR_START + scale, top - 2, canvas.y + 2, "one")


def drawn(group, own, number):
    """The chart of a report.Group; own is the contender to be marked, number writes a ratio."""
    canvas = Canvas()
    canvas.text(16, 24, group.rules["title"], "title")
    axis_end = longest(group)
    is_broken = any(ratio > axis_end for one in group.ratios.values() for ratio in one.values())
    canvas.text(16, 42, group.scale() + ("; broken bars are longer" if is_broken else ""))
    canvas.y = 48
    scale = (BAR_END - BAR_START) / axis_end
    for name in group.inputs:
        draw_input(canvas, group, name, own, number, scale)
    if any(group.bound(name) is not None for name in group.inputs):
        canvas.y += 10
        canvas.line(BAR_START + 2, canvas.y + 2, canvas.y + ROW - 2, "aim")
        canvas.text(BAR_START + 10, canvas.y + 14, "what it aims at")
        canvas.y += ROW
    return document(canvas, f"{group.rules['title']}: {group.scale()}")


def document(canvas, title):
    height = canvas.y + 12
    head = f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" ' \
           f'viewBox="0 0 {WIDTH} {height}" role="img">'
    return "\n".join([head, f"<title>{escape(title)}</title>", f"<style>\n{STYLE}</style>", *canvas.parts,
                      "</svg>"]) + "\n"


def overview(speeds, number):
    """The chart of all groups: speeds are [(title, rival, times as fast as the rival)]. The axis is logarithmic; what
    is slower goes to the left."""
    canvas = Canvas()
    canvas.text(16, 24, "How many times as fast", "title")
    canvas.text(16, 42, "mean over the inputs of each work; to the left of the line: slower")
    canvas.y = 54
    exponents = [math.log2(speed) for _, _, speed in speeds] + [0.0]
    start, end = 420, BAR_END
    scale = (end - start) / (max(exponents) - min(exponents))
    one = start - min(exponents) * scale
    for title, rival, speed in speeds:
        length = math.log2(speed) * scale
        canvas.text(start - 12, canvas.y + 14, f"{title} · {rival}", "label")
        canvas.bar(abs(length), "own" if length >= 0 else "peer", min(one, one + length))
        canvas.text(max(one, one + length) + 6, canvas.y + 14, f"{number(speed)} ×", "own" if length >= 0 else "")
        canvas.y += ROW
    canvas.line(one, 52, canvas.y + 2, "one")
    return document(canvas, "zorvcrt beside the peer of each work")
