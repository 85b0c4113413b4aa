// Synchronous first-in first-out buffer of 16 words of 8 bits, held in flip-flops.
//
// The pointers have one bit more than an address: equal pointers mean empty, pointers that
// differ in that bit alone mean full. A push while full and a pop while empty are ignored.

module fifo(input clk, input rst, input push, input pop, input [7:0] din,
            output [7:0] dout, output full, output empty, output [4:0] count);
    reg [7:0] store [0:15];
    reg [4:0] head;         // next word to read
    reg [4:0] tail;         // next place to write

    wire take = push & ~full;
    wire give = pop & ~empty;

    assign empty = head == tail;
    assign full = head == (tail ^ 5'b10000);
    assign count = tail - head;
    assign dout = store[head[3:0]];

    always @(posedge clk) begin
        if (take)
            store[tail[3:0]] <= din;
        if (rst) begin
            head <= 5'd0;
            tail <= 5'd0;
        end else begin
            head <= head + {4'b0, give};
            tail <= tail + {4'b0, take};
        end
    end
endmodule
