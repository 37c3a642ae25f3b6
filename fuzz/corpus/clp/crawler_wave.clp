@CLP970401
# wave: waves with the bucket, once
COORDINATE
4
# boom
16 1 raise
START raise 0x0
# arm
17 1 reach
START reach 0x0
# bucket
18 2 greet
START greet 0x0
KEY2 greet rest
# house
12 1 bow
START bow 0x0
# sequences: frames, type of key frame, number of the key frame
raise
SEQ 40 ps0r1t0 0
SEQ 100 ps0r1t0 1
SEQ 40 ps0r1t0 0
END 0x0
reach
SEQ 40 ps9r1t1 0
SEQ 100 ps9r1t1 1
SEQ 40 ps9r1t1 0
END 0x0
greet
SEQ 40 ps0r1t0 2
SEQ 14 ps0r1t0 3
SEQ 14 ps0r1t0 4
SEQ 14 ps0r1t0 3
SEQ 14 ps0r1t0 4
SEQ 14 ps0r1t0 3
SEQ 14 ps0r1t0 4
rest
SEQ 56 ps0r1t0 2
END 0x0
bow
SEQ 140 ps9r0t9 0
SEQ 20 ps9r0t9 1
SEQ 20 ps9r0t9 0
END 0x0
# key frames: place, angles, size, as far as the type has them
TYPE ps0r1t0
-432 0 0
-705 0 0
319 0 0
455 0 0
-341 0 0
TYPE ps9r1t1
0 90 3600 1126 0 0 4096
0 90 3600 387 0 0 4096
TYPE ps9r0t9
0 600 0 4096
0 590 0 4014
