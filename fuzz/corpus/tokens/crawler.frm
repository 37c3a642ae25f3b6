@FRM970401
# the group file, or NULL when the vertices are named here
SQX=NULL
# the number of coordinates
19
# 0 world: matrix, place, angles and parent
4096 0 0
0 4096 0
0 0 4096
0 0 0
0 0 0 0
# 1 base, carried by world: matrix, place, angles and parent
4096 0 0
0 4096 0
0 0 4096
0 450 0
0 0 0 0
# 2 track_l, carried by base: matrix, place, angles and parent
4096 0 0
0 4096 0
0 0 4096
1150 0 0
0 0 0 1
# 3 track_r, carried by base: matrix, place, angles and parent
4096 0 0
0 4096 0
0 0 4096
-1150 0 0
0 0 0 1
# 4 wheel_l1, carried by base: matrix, place, angles and parent
4096 0 0
0 4096 0
0 0 4096
1150 0 1350
0 0 0 1
# 5 wheel_l2, carried by base: matrix, place, angles and parent
4096 0 0
0 4046 -641
0 641 4046
1150 0 450
102 0 0 1
# 6 wheel_l3, carried by base: matrix, place, angles and parent
4096 0 0
0 3896 -1266
0 1266 3896
1150 0 -450
205 0 0 1
# 7 wheel_l4, carried by base: matrix, place, angles and parent
4096 0 0
0 3650 -1860
0 1860 3650
1150 0 -1350
307 0 0 1
# 8 wheel_r1, carried by base: matrix, place, angles and parent
4096 0 0
0 4096 0
0 0 4096
-1150 0 1350
0 0 0 1
# 9 wheel_r2, carried by base: matrix, place, angles and parent
4096 0 0
0 4046 -641
0 641 4046
-1150 0 450
102 0 0 1
# 10 wheel_r3, carried by base: matrix, place, angles and parent
4096 0 0
0 3896 -1266
0 1266 3896
-1150 0 -450
205 0 0 1
# 11 wheel_r4, carried by base: matrix, place, angles and parent
4096 0 0
0 3650 -1860
0 1860 3650
-1150 0 -1350
307 0 0 1
# 12 house, carried by base: matrix, place, angles and parent
3742 0 1666
0 4096 0
-1666 0 3742
0 600 0
0 273 0 1
# 13 cab, carried by house: matrix, place, angles and parent
4096 0 0
0 4096 0
0 0 4096
740 260 520
0 0 0 12
# 14 beacon, carried by cab: matrix, place, angles and parent
3547 0 2048
0 4096 0
-2048 0 3547
-180 1460 -220
0 341 0 13
# 15 lamps, carried by cab: matrix, place, angles and parent
4096 0 0
0 3974 -991
0 991 3974
0 1450 330
159 0 0 13
# 16 boom, carried by house: matrix, place, angles and parent
4096 0 0
0 3228 2522
0 -2522 3228
0 560 720
-432 0 0 12
# 17 arm, carried by boom: matrix, place, angles and parent
4096 0 0
0 -641 -4046
0 4046 -641
0 90 3600
1126 0 0 16
# 18 bucket, carried by arm: matrix, place, angles and parent
4096 0 0
0 3617 -1923
0 1923 3617
0 0 2100
319 0 0 17
# which vertices each coordinate carries
0 178 0-85,86-177
1 96 178-273
2 88 274-361
3 88 362-449
4 34 450-483
5 34 450-483
6 34 450-483
7 34 450-483
8 34 450-483
9 34 450-483
10 34 450-483
11 34 450-483
12 178 484-569,570-661
13 102 662-747,748-763
14 49 764-812
15 51 813-863
16 124 864-987
17 92 988-1079
18 85 1080-1164
