"""Draws the ratios of the table as a bar chart, with gnuplot."""
import subprocess

ROW_HEIGHT = 19


def label(row):
    return f"{row['function'].partition(',')[0]}, {row['input']} : {row['peer']}"


def label_place(row):
    return row["goal"] if row["ratio"] < row["goal"] < 1.5 * row["ratio"] else row["ratio"]


def quoted(text):
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"').replace("_", "\\\\_") + '"'


def script(rows, output):
    low = min([0.25] + [row["ratio"] / 2 for row in rows])
    high = max(2 * row["ratio"] for row in rows)
    tics = [tic for tic in (0.25, 0.5, 1, 2, 5, 10, 20, 50, 100, 200) if tic <= high]
    # The number stands to the right of the bar, and of the goal's mark if that would cross it.
    measured = "\n".join(f"{i} {row['ratio']:.3f} {label_place(row):.3f}" for i, row in enumerate(rows))
    goals = "\n".join(f"{i} {row['goal']}" for i, row in enumerate(rows) if row["goal"])
    lines = [
        f'set terminal svg size 1100,{120 + ROW_HEIGHT * len(rows)} font "sans-serif,12" '
        'background "white"',
        f'set output "{output}"',
        'set label "Time of the peer / time of the library" at screen 0.25, graph 1.02 center '
        'font ",15"',
        "set lmargin at screen 0.55",
        "set rmargin at screen 0.95",
        "set tmargin 5",
        "set logscale x",
        f"set xrange [{low}:{high:.1f}]",
        f"set yrange [{len(rows)}:-1]",
        "set xtics (" + ", ".join(f'"{tic:g}" {tic}' for tic in tics) + ") nomirror",
        "set ytics (" + ", ".join(f"{quoted(label(row))} {i}" for i, row in enumerate(rows)) +
        ") scale 0 nomirror font ',10'",
        'set grid xtics lt 1 lc rgb "#dddddd"',
        "set border 1",
        "set style fill solid noborder",
        "set key at screen 0.95, graph 1.025 right horizontal",
        f'set arrow from 1,-1 to 1,{len(rows)} nohead lc rgb "#444444"',
        f"$measured << EOD\n{measured}\nEOD",
        f"$goals << EOD\n{goals}\nEOD",
        f"plot $measured using 2:1:({low}):2:($1-0.36):($1+0.36) with boxxyerror "
        'lc rgb "#4878a8" title "measured", '
        "$goals using 2:($1-0.45):(0):(0.9) with vectors nohead lw 2 "
        'lc rgb "#c04020" title "goal", '
        "$measured using 3:1:(sprintf('%.1f', $2)) with labels left offset char 0.6,0 font ',10' notitle",
    ]
    return "\n".join(lines) + "\n"


def draw(rows, output):
    output.parent.mkdir(exist_ok=True)
    rows = [row for row in rows if row["goal"] is not None]
    subprocess.run(["gnuplot"], input=script(rows, output), text=True, check=True)
    return output
