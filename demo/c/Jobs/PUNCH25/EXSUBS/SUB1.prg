%
O9001 (Louvre)
N10 G66
N20 M99
%
