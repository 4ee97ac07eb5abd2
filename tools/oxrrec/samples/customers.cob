      * A bank's customers. Records of different length, each behind a record descriptor of 4 bytes:
      * customers.rdw.bin, CCSID 37, is written by make_samples.py.
       01  CUSTOMER.
           05  CUSTOMER-ID             PIC 9(6).
           05  CUSTOMER-NAME           PIC X(20).
           05  HOME-ADDRESS.
               10  STREET              PIC X(18).
               10  POSTCODE            PIC X(7).
               10  TOWN                PIC X(15).
           05  BALANCE                 PIC S9(13)V99  COMP-3.
           05  SINCE-DATE              PIC X(10).
           05  FILLER.
               10  BRANCH              PIC 9(4)       COMP.
               10  RATING              PIC S9(3)V9(2).
               10  FILLER              PIC X(2).
           05  MOVEMENT-COUNT          PIC 9(4)       COMP.
           05  MOVEMENT OCCURS 0 TO 5 TIMES
                        DEPENDING ON MOVEMENT-COUNT.
               10  BOOKED-ON           PIC X(10).
               10  AMOUNT              PIC S9(7)V99   COMP-3.
               10  REMARK              PIC X(16).
