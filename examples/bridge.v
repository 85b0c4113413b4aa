// Two first-in first-out buffers between two sides that exchange bytes, with a running checksum of
// what goes through each. Each buffer holds 8 bytes; a push while full and a pop while empty are
// ignored.

module buffer(input clk, input rst, input push, input pop, input [7:0] din,
              output [7:0] dout, output full, output empty);
    reg [7:0] store [0:7];
    reg [3:0] head, tail;

    assign empty = head == tail;
    assign full = head == (tail ^ 4'b1000);
    assign dout = store[head[2:0]];

    always @(posedge clk) begin
        if (push & ~full)
            store[tail[2:0]] <= din;
        if (rst) begin
            head <= 4'd0;
            tail <= 4'd0;
        end else begin
            head <= head + {3'b0, pop & ~empty};
            tail <= tail + {3'b0, push & ~full};
        end
    end
endmodule

module checksum(input clk, input rst, input take, input [7:0] data, output reg [15:0] sum);
    wire [7:0] low = sum[7:0] + data;

    always @(posedge clk)
        if (rst)
            sum <= 16'd0;
        else if (take)
            sum <= {sum[15:8] + low, low};
endmodule

module bridge(input clk, input rst,
              input a_push, input a_pop, input [7:0] a_in, output [7:0] a_out,
              input b_push, input b_pop, input [7:0] b_in, output [7:0] b_out,
              output [15:0] a_sum, output [15:0] b_sum, output [3:0] state);
    wire a_full, a_empty, b_full, b_empty;

    buffer u_there(.clk(clk), .rst(rst), .push(a_push), .pop(b_pop), .din(a_in), .dout(b_out),
                   .full(a_full), .empty(b_empty));
    buffer u_back(.clk(clk), .rst(rst), .push(b_push), .pop(a_pop), .din(b_in), .dout(a_out),
                  .full(b_full), .empty(a_empty));
    checksum u_sum_a(.clk(clk), .rst(rst), .take(a_push & ~a_full), .data(a_in), .sum(a_sum));
    checksum u_sum_b(.clk(clk), .rst(rst), .take(b_push & ~b_full), .data(b_in), .sum(b_sum));
    assign state = {a_full, a_empty, b_full, b_empty};
endmodule
