@CLP970401
COORDINATE
2
1 2 walk
START walk 0x1
KEY2 walk stop
2 0 none
walk
SEQ 5 ps0r1t1 1
SEQ 6 ps0r0t0 0
GOTO walk 0x1 0x2
stop
END 0x3
TYPE ps0r1t1
1 2 3 4 5 6
-1 -2 -3 -4 -5 -6
TYPE ps0r0t0
7 8
