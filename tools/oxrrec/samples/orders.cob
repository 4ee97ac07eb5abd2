      * Orders and their lines, as text: a head, the lines of that
      * order, the next head. orders.txt is written by hand.
       01  ORDER-HEAD.
           05  KIND                    PIC X.
           05  ORDER-NO                PIC 9(4).
           05  CUSTOMER                PIC X(16).
       01  ORDER-LINE.
           05  KIND                    PIC X.
           05  ARTICLE                 PIC X(10).
           05  QUANTITY                PIC 9(3).
           05  PRICE                   PIC 9(5)V99.
