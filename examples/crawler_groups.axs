@AXS970401
# the number of pivots
11
# coordinate, place of its joint
# base
1 0 450 0
# track_l
2 1150 450 0
# track_r
3 -1150 450 0
# wheel_l1
4 1150 450 1350
# house
12 0 1050 0
# cab
13 740 1310 520
# beacon
14 560 2770 300
# lamps
15 740 2760 850
# boom
16 0 1610 720
# arm
17 0 1700 4320
# bucket
18 0 1700 6420
