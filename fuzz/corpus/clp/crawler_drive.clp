@CLP970401
# drive: drives ahead and back
COORDINATE
14
# base
1 3 ahead
START ahead 0x0
START park 0x1
KEY2 ahead back
# track_l
2 1 rumble
START rumble 0x0
# track_r
3 1 rumble_r
START rumble_r 0x0
# wheel_l1
4 2 spin
START spin 0x0
KEY2 spin spin_back
# wheel_l2
5 2 spin
START spin 0x0
KEY2 spin spin_back
# wheel_l3
6 2 spin
START spin 0x0
KEY2 spin spin_back
# wheel_l4
7 2 spin
START spin 0x0
KEY2 spin spin_back
# wheel_r1
8 2 spin
START spin 0x0
KEY2 spin spin_back
# wheel_r2
9 2 spin
START spin 0x0
KEY2 spin spin_back
# wheel_r3
10 2 spin
START spin 0x0
KEY2 spin spin_back
# wheel_r4
11 2 spin
START spin 0x0
KEY2 spin spin_back
# house
12 1 sway
START sway 0x0
# boom
16 1 carry
START carry 0x0
# beacon
14 1 flash
START flash 0x0
# sequences: frames, type of key frame, number of the key frame
ahead
SEQ 60 ps0r0t1 0
SEQ 60 ps0r0t1 1
back
SEQ 60 ps0r0t1 2
SEQ 60 ps0r0t1 1
GOTO ahead 0x0 0x0
park
SEQ 30 ps0r0t1 0
END 0x0
rumble
SEQ 4 ps0r0t9 0
SEQ 4 ps0r0t9 1
GOTO rumble 0x0 0x0
rumble_r
SEQ 4 ps0r0t9 2
SEQ 4 ps0r0t9 3
GOTO rumble_r 0x0 0x0
spin
SEQ 60 ps0r1t0 0
SEQ 60 ps0r1t0 1
spin_back
SEQ 60 ps0r1t0 2
SEQ 60 ps0r1t0 1
GOTO spin 0x0 0x0
sway
SEQ 40 ps0r1t9 0
SEQ 40 ps0r1t9 1
GOTO sway 0x0 0x0
carry
SEQ 40 ps0r1t0 3
SEQ 40 ps0r1t0 4
GOTO carry 0x0 0x0
flash
SEQ 10 ps1r1t9 0
SEQ 10 ps1r1t9 1
SEQ 10 ps1r1t9 2
SEQ 10 ps1r1t9 3
GOTO flash 0x0 0x0
# key frames: place, angles, size, as far as the type has them
TYPE ps0r0t1
0 450 0
0 462 1750
0 450 3500
TYPE ps0r0t9
1150 6 0
1150 -4 0
-1150 -4 0
-1150 6 0
TYPE ps0r1t0
0 0 0
2535 0 0
5070 0 0
-432 0 0
-415 0 0
TYPE ps0r1t9
0 600 0 0 250 0
0 608 0 0 296 0
TYPE ps1r1t9
-180 1460 -220 0 0 0 4096 4096 4096
-180 1460 -220 0 1024 0 4710 4710 4710
-180 1460 -220 0 2048 0 4096 4096 4096
-180 1460 -220 0 3072 0 4710 4710 4710
