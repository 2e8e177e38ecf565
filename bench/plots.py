"""The plots of the report, drawn by gnuplot."""
import subprocess

MODES = ["Normal", "Multiply", "Screen", "Overlay", "HardLight", "Darken", "Lighten", "Difference", "Exclusion",
         "ColorDodge", "ColorBurn", "SoftLight"]


def hot(mode, content):
    return f"{mode}/7<-7/{content}/rect/plain/256"


def draw(script):
    subprocess.run(["gnuplot"], input=script, text=True, check=True)


def modes(runs, out):
    """Speed by mode and content on one machine. @param runs its vector targets, the best one first."""
    series = [(f"{run.maker} {run.target}", run, "Blend") for run in reversed(runs)]
    series += [("pixman", runs[0], "Pixman"), ("scalar loop", runs[0], "Scalar")]
    series = [s for s in series if any(f"{s[2]}/{hot(m, 'a')}" in s[1].ns for m in MODES)]
    blocks = []
    for content in "abce":
        rows = [" ".join([mode, *(str(run.speed.get(f"{kind}/{hot(mode, content)}", "NaN")) for _, run, kind in series)])
                for mode in MODES]
        blocks.append(f"$content_{content} << EOD\n" + "\n".join(rows) + "\nEOD\n")
    titles = {"a": "a: constant alpha over opaque", "b": "b: random over opaque", "c": "c: random over random",
              "e": "e: sprite over alpha 128"}
    script = "".join(blocks) + f"""
set terminal pngcairo size 1200,800 font "sans,10"
set output "{out}"
set multiplot layout 2,2
set style data histograms
set style fill solid
set logscale y
set yrange [10:30000]
set ylabel "Mpixel/s"
set grid ytics
set xtics rotate by -35 scale 0
set key top right horizontal samplen 1 width -2
"""
    for content, title in titles.items():
        columns = ", ".join(f"$content_{content} using {i + 2}:xtic(1) title '{name.replace('_', ' ')}'"
                            for i, (name, _, _) in enumerate(series))
        script += f"set title '{title}'\nplot {columns}\n"
    draw(script)


def pages(run, out):
    """A point for each page: time of a call by pixman and by the library."""
    groups = {"own": "pages of the project", "others": "other pages"}
    blocks, columns = [], []
    for group, title in groups.items():
        names = run.names(f"Pages/Library/{group}/")
        points = [(run.ns.get(f"Pages/Pixman/{group}/{name}"), run.ns[f"Pages/Library/{group}/{name}"])
                  for name in names]
        lines = [f"{pixman} {library}" for pixman, library in points if pixman and library]
        if lines:
            blocks.append(f"${group} << EOD\n" + "\n".join(lines) + "\nEOD\n")
            columns.append(f"${group} title '{title}' with points pointtype 7 pointsize 0.8")
    if not columns:
        return
    draw("".join(blocks) + f"""
set terminal pngcairo size 700,600 font "sans,10"
set output "{out}"
set logscale xy
set xlabel "pixman, ns a call"
set ylabel "imageop, ns a call"
set grid
set key top left
set title "Calls of pages on {run.maker}, {run.target}; below the line the library is faster" noenhanced
plot x title 'as fast' with lines, {", ".join(columns)}
""")
