%oldchk=model.chk
#n oniom(td(nstates=4,root=2)/6-31+g(d):uff) guess=read units=au geom=connectivity force=x

ONIOM

0/2,0,1,0 1
Ar -1 4.5 0.8 -3.9 Low
H-HW-0.4 0 0.0 0.76 -0.472 H
C-CT--0.25(PDBName=C A,ResNum=3) 0 1 2 3 M H-HC 2 0.7
8, 0, 0., 0., 0.118, high
