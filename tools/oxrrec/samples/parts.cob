       >>SOURCE FORMAT IS FREE
*> Parts of a workshop's store. Records of one length without anything between them:
*> parts.bin, CCSID 819, integers big-endian, is written by make_samples.py.
01 PART.
   05 PART-NO        PIC 9(5).
   05 PART-CODE REDEFINES PART-NO.
      10 PART-FAMILY PIC 9(2).
      10 PART-VARIANT PIC 9(3).
   05 DESCRIPTION    PIC X(15).
   05 STOCK          PIC S9(9) COMP-5.
   05 REORDER-LEVEL  PIC S9(4) COMP.
   05 SERIAL-NO      PIC 9(18) BINARY.
   05 PRICE          PIC S9(5)V99.
   05 PRICE-CHANGE   PIC S9(3)V9 SIGN LEADING SEPARATE.
   05 SHELF-OFFSET   PIC S9(4) SIGN IS TRAILING SEPARATE CHARACTER.
   05 TOLERANCE      PIC SPP9(2).     *> 4 places after the point, 2 of them stored
   05 PACK-SIZE      PIC 9(2)PP.      *> hundreds
   05 BIN-CODE       PIC X(3) OCCURS 3 TIMES.
   05 WEIGHT-SHOWN   PIC Z(3)9.99-.
   05 PART-GROUP     PIC 9(3) COMP-3.
   05 CHECKED-BY     PIC X(4) JUSTIFIED RIGHT.
