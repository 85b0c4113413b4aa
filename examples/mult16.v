// 16 x 16 bit unsigned array multiplier: carry-save rows, one ripple row at the end.
//
// Row i adds the partial product a * b[i]; its sums move one column to the right, its carries
// stay in their column. Bit 0 of row i is bit i of the product; the last row's sums and carries
// meet in the ripple row, which gives the upper half.

module full_adder(input x, input y, input z, output sum, output carry);
    assign sum = x ^ y ^ z;
    assign carry = (x & y) | (z & (x ^ y));
endmodule

module mult16(input [15:0] a, input [15:0] b, output [31:0] p);
    wire [15:0] s [0:15];   // sums of row i
    wire [15:0] c [0:15];   // carries of row i
    wire [16:0] r;          // carries of the ripple row

    genvar i, j;
    generate
        assign s[0] = a & {16{b[0]}};
        assign c[0] = 16'b0;
        assign p[0] = s[0][0];
        for (i = 1; i < 16; i = i + 1) begin : row
            for (j = 0; j < 16; j = j + 1) begin : column
                full_adder fa(.x(a[j] & b[i]),
                              .y(j == 15 ? 1'b0 : s[i - 1][(j + 1) % 16]),
                              .z(c[i - 1][j]), .sum(s[i][j]), .carry(c[i][j]));
            end
            assign p[i] = s[i][0];
        end
        assign r[0] = 1'b0;
        for (j = 0; j < 16; j = j + 1) begin : ripple
            full_adder fa(.x(j == 15 ? 1'b0 : s[15][(j + 1) % 16]), .y(c[15][j]), .z(r[j]),
                          .sum(p[16 + j]), .carry(r[j + 1]));
        end
    endgenerate
endmodule
