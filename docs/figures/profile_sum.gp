set terminal pngcairo size 1000,900 font "sans,10"
set output figure
set multiplot layout 3,1 margins 0.08,0.97,0.07,0.96 spacing 0.02,0.065
set xrange [499.4:501.85]
set yrange [-90:1350]
set ylabel "intensity"
set key top right
set title "As acquired: zero samples are left out between peaks" offset 0,-0.6
plot data index 0 using 1:2 with linespoints pt 7 ps 0.55 lc rgb "#1f4e99" title "first scan", \
     data index 1 using 1:2 with linespoints pt 6 ps 0.55 lc rgb "#c05000" title "second scan, half a step apart"
set title "The first scan's axis, refilled, and extended down to the second scan's start: steps between neighbouring points" offset 0,-0.6
set yrange [0.4:200]
set logscale y
set ylabel "steps"
plot data index 0 using 1:3 with points pt 6 ps 0.9 lc rgb "#1f4e99" title "as acquired", \
     data index 2 using 1:3 with points pt 7 ps 0.35 lc rgb "#208040" title "refilled and extended: one step everywhere"
unset logscale y
set yrange [-90:1750]
set ylabel "intensity"
set xlabel "m/z"
set title "Sum on the first scan's axis" offset 0,-0.6
plot data index 2 using 1:2 with points pt 7 ps 0.55 lc rgb "#208040" title "sum", \
     data index 3 using 1:2 with lines lw 1 lc rgb "#808080" title "both signals, exactly"
