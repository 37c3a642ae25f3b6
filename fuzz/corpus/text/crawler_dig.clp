@CLP970401
# dig: digs in front and dumps at the side
COORDINATE
6
# house
12 2 slew
START slew 0x0
KEY2 slew slew_home
# boom
16 1 lift
START lift 0x0
# arm
17 2 crowd
START crowd 0x0
KEY2 crowd crowd_in
# bucket
18 1 curl
START curl 0x0
# lamps
15 1 look
START look 0x0
# beacon
14 2 pulse
START pulse 0x0
START dark 0x1
# sequences: frames, type of key frame, number of the key frame
slew
SEQ 50 ps0r1t0 0
SEQ 110 ps0r1t0 0
SEQ 60 ps0r1t0 1
slew_home
SEQ 60 ps0r1t0 1
GOTO slew 0x0 0x0
lift
SEQ 50 ps0r1t0 2
SEQ 60 ps0r1t0 3
SEQ 50 ps0r1t0 4
SEQ 120 ps0r1t0 5
GOTO lift 0x0 0x0
crowd
SEQ 50 ps0r1t1 0
crowd_in
SEQ 60 ps0r1t1 1
SEQ 50 ps0r1t1 2
SEQ 120 ps0r1t1 3
GOTO crowd 0x0 0x0
curl
SEQ 50 ps9r1t0 0
SEQ 60 ps9r1t0 1
SEQ 50 ps9r1t0 2
SEQ 120 ps9r1t0 3
GOTO curl 0x0 0x0
look
SEQ 140 ps1r1t1 0
SEQ 140 ps1r1t1 1
GOTO look 0x0 0x0
pulse
SEQ 8 ps1r0t0 0
SEQ 8 ps1r0t0 1
GOTO pulse 0x0 0x0
dark
SEQ 1 ps1r0t0 2
END 0x0
# key frames: place, angles, size, as far as the type has them
TYPE ps0r1t0
0 0 0
0 910 0
-137 0 0
-205 0 0
-523 0 0
-455 0 0
TYPE ps0r1t1
0 90 3600 660 0 0
0 90 3600 1274 0 0
0 90 3600 1183 0 0
0 90 3600 865 0 0
TYPE ps9r1t0
-228 0 0 4096
523 0 0 4096
705 0 0 4096
-546 0 0 4178
TYPE ps1r1t1
0 1450 330 159 0 0 4096 4096 4096
0 1450 330 273 0 0 4096 4096 5120
TYPE ps1r0t0
4096 4096 4096
4915 4915 4915
2048 2048 2048
