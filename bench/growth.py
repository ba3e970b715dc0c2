"""How the cost of an index and of a rewrite grows with messages and bytes: measured, fitted by a line, drawn."""
import os, statistics

from jobs import DATA, corpus

COUNTS = [100, 300, 1000, 3000, 10000, 30000]  # messages of 2 KB
MEGABYTES = [1, 3, 10, 30, 100, 300, 1000]  # of messages of 50 KB


def folder(name, count, mean):
    path = f"{DATA}/{name}"
    if not os.path.exists(path):
        corpus(name, "--count", str(count), "--mean", str(mean), "--seed", "3", "--no-bare-from")(path + ".new")
        os.rename(path + ".new", path)
    return path


def fit(points):
    """The line y = a + b x by least squares, and R squared."""
    mx, my = (statistics.fmean(v) for v in zip(*points))
    b = sum((x - mx) * (y - my) for x, y in points) / sum((x - mx) ** 2 for x, _ in points)
    a = my - b * mx
    rest = sum((y - a - b * x) ** 2 for x, y in points)
    return a, b, 1 - rest / sum((y - my) ** 2 for _, y in points)


def median(measure, template, rounds):
    runs = [r for r in (measure(template) for _ in range(rounds + 1)) if r][1:]
    return statistics.median(w for w, _ in runs), max(m for _, m in runs) / 1024


def series(measure, rounds):
    """(title, unit of x, [(x, seconds, MB of memory)])"""
    index, rewrite = "{bin}/index_bench %s", "sh -c 'cp %s {out} && exec {bin}/rewrite_bench {out} 2'"
    small = [(n, folder(f"growth_n{n}.mbox", n, 2000)) for n in COUNTS]
    large = []
    for mb in MEGABYTES:
        path = folder(f"growth_m{mb}.mbox", max(2, mb * 20), 54000)
        large.append((os.path.getsize(path) / 1e6, path))
    for title, unit, template, folders in (("index", "messages", index, small), ("index", "MB", index, large),
                                           ("copy and rewrite", "MB", rewrite, large)):
        yield title, unit, [(x, *median(measure, template % path, rounds)) for x, path in folders]


def plot(curves):
    """Both axes logarithmic, one panel a curve."""
    import math
    width, height, parts = 300, 220, []
    for i, (title, unit, points) in enumerate(curves):
        lx = [math.log10(x) for x, _, _ in points]
        ly = [math.log10(y * 1000) for _, y, _ in points]
        sx = lambda v: 60 + i * (width + 70) + (v - min(lx)) / (max(lx) - min(lx)) * width
        low, high = math.floor(min(ly)), math.ceil(max(ly))
        sy = lambda v: 30 + height - (v - low) / (high - low) * height
        path = " ".join(f"{sx(a):.1f},{sy(b):.1f}" for a, b in zip(lx, ly))
        parts.append(f'<text x="{sx(min(lx)):.0f}" y="18">{title}: ms by {unit}</text>')
        parts += [f'<line x1="{sx(min(lx)):.0f}" x2="{sx(max(lx)):.0f}" y1="{sy(v):.0f}" y2="{sy(v):.0f}" class="g"/>'
                  f'<text x="{sx(min(lx)) - 6:.0f}" y="{sy(v) + 4:.0f}" text-anchor="end">{10 ** v:g}</text>'
                  for v in range(low, high + 1)]
        parts.append(f'<polyline points="{path}" class="c"/>')
        parts += [f'<circle cx="{sx(a):.1f}" cy="{sy(b):.1f}" r="3"/><text x="{sx(a):.1f}" y="{height + 48}" '
                  f'text-anchor="middle">{x:.0f}</text>' for a, b, (x, _, _) in zip(lx, ly, points)]
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {len(curves) * (width + 70) + 20} {height + 70}" '
            'font-family="sans-serif" font-size="11"><style>.g{stroke:#ccc}.c{fill:none;stroke:#06c;stroke-width:2}'
            'circle{fill:#06c}</style><rect width="100%" height="100%" fill="#fff"/>' + "\n".join(parts) + "</svg>\n")


def run(measure, rounds):
    curves = list(series(measure, rounds))
    lines = ["", "Growth (a line fitted to all points; seconds):", "",
             "| job | from | to | per unit | constant | R² | memory at the ends |", "|---|---|---|---|---|---|---|"]
    for title, unit, points in curves:
        a, b, r2 = fit([(x, y) for x, y, _ in points])
        lines.append(f"| {title} | {points[0][0]:.0f} {unit}: {points[0][1]:.4f} | {points[-1][0]:.0f} {unit}: "
                     f"{points[-1][1]:.4f} | {b * 1e6:.2f} us | {a * 1000:.2f} ms | {r2:.4f} | {points[0][2]:.1f} MB, "
                     f"{points[-1][2]:.1f} MB |")
    return lines, plot(curves)
