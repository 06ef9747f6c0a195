# Makes of the checkpoint of a molecule of three atoms that of a larger system, with an atom before
# the first and another one behind it.
/^Number of atoms/s/3$/5/
/^Atomic numbers/{
s/3$/5/
n
c\
          18           8          10           1           1
}
/^Current cartesian/{
s/ 9$/15/
n
N
c\
  9.00000000E+00  0.00000000E+00  0.00000000E+00  0.00000000E+00  0.00000000E+00\
  2.22987683E-01  0.00000000E+00  8.00000000E+00  8.00000000E+00  0.00000000E+00\
  1.43619185E+00 -8.91950731E-01  0.00000000E+00 -1.43619185E+00 -8.91950731E-01
}
