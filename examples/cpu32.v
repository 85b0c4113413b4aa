// A small 32-bit load-store processor of two stages: fetch, and execute with write-back.
//
// Sixteen registers, of which register 0 reads as zero. One instruction word holds
//   [31:28] operation   [27:24] rd   [23:20] ra   [19:16] rb   [15:0] immediate
// Instructions and data live outside; both memories answer in the same cycle. A taken branch
// empties the fetch stage, so it costs one cycle.

module cpu32(input clk, input rst, input [31:0] idata, input [31:0] din,
             output [15:0] iaddr, output [31:0] daddr, output [31:0] dout, output dwrite);
    localparam ADD = 4'd0, SUB = 4'd1, AND = 4'd2, OR = 4'd3, XOR = 4'd4, SLL = 4'd5, SRL = 4'd6,
               SRA = 4'd7, SLT = 4'd8, MUL = 4'd9, ADDI = 4'd10, LUI = 4'd11, LOAD = 4'd12,
               STORE = 4'd13, BEQ = 4'd14, JAL = 4'd15;

    reg [15:0] pc;          // address of the instruction being fetched
    reg [15:0] pcx;         // address of the instruction being executed
    reg [31:0] ir;          // instruction being executed
    reg live;               // ir holds an instruction, not a bubble
    reg [31:0] file [0:15];

    wire [3:0] op = ir[31:28];
    wire [3:0] rd = ir[27:24];
    wire [31:0] ra = ir[23:20] == 4'd0 ? 32'd0 : file[ir[23:20]];
    wire [31:0] rb = ir[19:16] == 4'd0 ? 32'd0 : file[ir[19:16]];
    wire [31:0] imm = {{16{ir[15]}}, ir[15:0]};

    wire immediate = op == ADDI || op == LOAD || op == STORE;
    wire subtract = op == SUB || op == SLT || op == BEQ;
    wire [31:0] second = immediate ? imm : rb;
    wire [31:0] sum = ra + (second ^ {32{subtract}}) + {31'd0, subtract};
    wire less = ra[31] != rb[31] ? ra[31] : sum[31];
    wire [31:0] product = ra[15:0] * rb[15:0];

    reg [31:0] result;
    always @* begin
        case (op)
            AND: result = ra & rb;
            OR: result = ra | rb;
            XOR: result = ra ^ rb;
            SLL: result = ra << rb[4:0];
            SRL: result = ra >> rb[4:0];
            SRA: result = $signed(ra) >>> rb[4:0];
            SLT: result = {31'd0, less};
            MUL: result = product;
            LUI: result = {ir[15:0], 16'd0};
            LOAD: result = din;
            JAL: result = {16'd0, pc};
            default: result = sum;
        endcase
    end

    wire taken = live && (op == JAL || (op == BEQ && sum == 32'd0));
    wire writes = live && op != STORE && op != BEQ && rd != 4'd0;

    assign iaddr = pc;
    assign daddr = sum;
    assign dout = rb;
    assign dwrite = live && op == STORE;

    always @(posedge clk) begin
        if (rst) begin
            pc <= 16'd0;
            pcx <= 16'd0;
            live <= 1'b0;
        end else begin
            pc <= taken ? pcx + ir[15:0] : pc + 16'd1;
            pcx <= pc;
            live <= !taken;
        end
        ir <= idata;
        if (writes)
            file[rd] <= result;
    end
endmodule
